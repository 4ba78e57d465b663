#include "access/PolicyReader.h"

#include "launch/Users.h"

#include <stdexcept>

namespace Procmand
{

namespace
{

using simdjson::dom::element;

[[noreturn]] void fail(std::string_view key, const std::string& problem)
{
    throw std::runtime_error(std::string(key) + ": " + problem);
}

std::string readText(std::string_view key, const element& value)
{
    std::string_view text;
    if (value.get(text) != simdjson::SUCCESS || text.empty())
        fail(key, "expected a text");
    return std::string(text);
}

std::vector<std::string> readTexts(std::string_view key, const element& value)
{
    simdjson::dom::array list;
    if (value.get(list) != simdjson::SUCCESS)
        fail(key, "expected an array of texts");
    std::vector<std::string> texts;
    for (const element text : list)
        texts.push_back(readText(key, text));
    return texts;
}

simdjson::dom::object readObject(std::string_view key, const element& value)
{
    simdjson::dom::object object;
    if (value.get(object) != simdjson::SUCCESS)
        fail(key, "expected an object");
    return object;
}

Role readRole(const element& value)
{
    const auto role = findRole(readText("role", value));
    if (!role)
        fail("role", "expected none, application, viewer or manager");
    return *role;
}

} // namespace

Policy PolicyReader::read(const std::string& text)
{
    simdjson::dom::parser parser;
    element root;
    if (const auto error = parser.parse(text).get(root); error != simdjson::SUCCESS)
        throw std::runtime_error(simdjson::error_message(error));
    for (const auto& [key, value] : readObject("the policy", root)) {
        if (key == "environment") {
            policy.environment = readTexts(key, value);
            continue;
        }
        simdjson::dom::array list;
        if (key != "rules")
            fail(key, "there is no such member; there are rules and environment");
        if (value.get(list) != simdjson::SUCCESS)
            fail(key, "expected an array of objects");
        for (const element rule : list)
            readRule(rule);
    }
    return std::move(policy);
}

void PolicyReader::readRule(const element& value)
{
    Policy::Rule rule;
    unsigned int subjects = 0;
    bool hasRole = false;
    for (const auto& [key, member] : readObject("a rule", value)) {
        if (key == "role") {
            rule.rights.role = readRole(member);
            hasRole = true;
        } else if (key == "methods") {
            rule.rights.methods = readMethods(member);
        } else if (key == "users") {
            rule.rights.users = readTexts(key, member);
        } else if (readSubject(key, member, rule.subject)) {
            ++subjects;
        } else {
            fail(key, "a rule has user, group or application, role, and may have methods and users");
        }
    }
    if (subjects != 1)
        fail("a rule", "expected one of user, group and application");
    if (!hasRole)
        fail("a rule", "expected a role");
    policy.rules.push_back(std::move(rule));
}

bool PolicyReader::readSubject(std::string_view key, const element& value, Policy::Subject& subject) const
{
    if (key == "user") {
        const auto user = findUser(readText(key, value));
        if (!user)
            fail(key, "there is no user " + readText(key, value));
        subject.user = user->id;
    } else if (key == "group") {
        subject.group = findGroup(readText(key, value));
        if (!subject.group)
            fail(key, "there is no group " + readText(key, value));
    } else if (key == "application") {
        subject.application = readText(key, value);
    } else {
        return false;
    }
    return true;
}

std::map<std::string, bool, std::less<>> PolicyReader::readMethods(const element& value)
{
    std::map<std::string, bool, std::less<>> methods;
    for (const auto& [name, allowed] : readObject("methods", value)) {
        bool isAllowed = false;
        if (allowed.get(isAllowed) != simdjson::SUCCESS)
            fail(name, "expected true or false");
        methods[std::string(name)] = isAllowed;
    }
    return methods;
}

} // namespace Procmand
