#include <corvane/common/TokenStore.h>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Corvane::Test
{

namespace
{

using Attributes = TokenStore::Attributes;

Attributes attribute(const std::string& name, const std::string& attribute, int value)
{
    Attributes attributes;
    attributes.getValues()[name].getValues()[attribute] = value;
    return attributes;
}

/// Attributes with so many names, each with so many attributes.
Attributes attributesOf(std::size_t names, std::size_t attributesOfEach)
{
    Attributes attributes;
    for (std::size_t i = 0; i < names; ++i) {
        auto& values = attributes.getValues()["n" + std::to_string(i)].getValues();
        for (std::size_t k = 0; k < attributesOfEach; ++k)
            values["a" + std::to_string(k)] = static_cast<int>(k);
    }
    return attributes;
}

class TokenStoreTest : public testing::Test
{
protected:
    /// @return what the store says of a token that it refuses
    std::string refusalOf(unsigned int token, const Attributes& attributes)
    {
        try {
            store.create(token, attributes);
        } catch (const std::length_error& error) {
            return error.what();
        }
        return "nothing: it is kept";
    }

    void fill()
    {
        for (unsigned int token = 0; token < TokenStore::TOKEN_LIMIT; ++token)
            store.create(token, attribute("volume", "change", 1));
    }

    TokenStore store;
};

} // namespace

TEST_F(TokenStoreTest, IsEmptyAtFirst)
{
    EXPECT_EQ(store.getCount(), 0U);
    EXPECT_FALSE(store.contains(0));
    EXPECT_EQ(store.find(0, "volume", "change"), std::nullopt);
}

TEST_F(TokenStoreTest, FindsWhatWasKeptByTokenNameAndAttribute)
{
    Attributes attributes = attribute("volume", "change", 1);
    attributes.getValues()["volume"].getValues()["max"] = -50;
    attributes.getValues()["channel"].getValues()["change"] = 0;
    store.create(4294967295, attributes);

    EXPECT_EQ(store.find(4294967295, "volume", "change"), 1);
    EXPECT_EQ(store.find(4294967295, "volume", "max"), -50);
    EXPECT_EQ(store.find(4294967295, "channel", "change"), 0);
    EXPECT_TRUE(store.contains(4294967295));
    EXPECT_EQ(store.getCount(), 1U);
}

TEST_F(TokenStoreTest, FindsNothingWhereTokenNameOrAttributeIsAnother)
{
    store.create(1, attribute("volume", "change", 1));

    EXPECT_EQ(store.find(2, "volume", "change"), std::nullopt);
    EXPECT_EQ(store.find(1, "Volume", "change"), std::nullopt);
    EXPECT_EQ(store.find(1, "volume", "max"), std::nullopt);
    EXPECT_EQ(store.find(1, "change", "volume"), std::nullopt);
    EXPECT_EQ(store.find(1, "", ""), std::nullopt);
    EXPECT_FALSE(store.contains(2));
}

TEST_F(TokenStoreTest, KeepsATokenWithoutAttributes)
{
    store.create(1, {});

    EXPECT_TRUE(store.contains(1));
    EXPECT_EQ(store.find(1, "", ""), std::nullopt);
}

TEST_F(TokenStoreTest, ReplacesAllAttributesOfATokenThatIsThere)
{
    store.create(1, attribute("volume", "change", 1));
    store.create(1, attribute("channel", "change", 2));

    EXPECT_EQ(store.find(1, "volume", "change"), std::nullopt);
    EXPECT_EQ(store.find(1, "channel", "change"), 2);
    EXPECT_EQ(store.getCount(), 1U);
}

TEST_F(TokenStoreTest, ForgetsOneTokenAndNoOther)
{
    store.create(1, attribute("volume", "change", 1));
    store.create(2, attribute("volume", "change", 1));

    store.remove(1);

    EXPECT_FALSE(store.contains(1));
    EXPECT_EQ(store.find(1, "volume", "change"), std::nullopt);
    EXPECT_EQ(store.find(2, "volume", "change"), 1);
    EXPECT_EQ(store.getCount(), 1U);
}

TEST_F(TokenStoreTest, TakesTheRemovalOfAnUnknownTokenForNoError)
{
    store.create(1, {});

    EXPECT_NO_THROW(store.remove(2));
    EXPECT_NO_THROW(store.remove(1));
    EXPECT_NO_THROW(store.remove(1));

    EXPECT_EQ(store.getCount(), 0U);
}

TEST_F(TokenStoreTest, Keeps4096TokensAndRefusesTheNext)
{
    fill();
    EXPECT_EQ(store.getCount(), 4096U);

    EXPECT_EQ(refusalOf(4096, {}), "token 4096 is one too many: at most 4096 are kept");

    EXPECT_FALSE(store.contains(4096));
    EXPECT_EQ(store.getCount(), 4096U);
    EXPECT_TRUE(store.contains(0));
    EXPECT_TRUE(store.contains(4095));
}

TEST_F(TokenStoreTest, ReplacesATokenAlsoWhenItIsFull)
{
    fill();

    store.create(5, attribute("volume", "change", 9));

    EXPECT_EQ(store.find(5, "volume", "change"), 9);
    EXPECT_EQ(store.getCount(), 4096U);
}

TEST_F(TokenStoreTest, HasRoomAgainAfterARemoval)
{
    fill();
    store.remove(17);

    store.create(4096, {});

    EXPECT_TRUE(store.contains(4096));
    EXPECT_EQ(store.getCount(), 4096U);
}

TEST_F(TokenStoreTest, Keeps64NamesAndRefusesOneMore)
{
    store.create(1, attributesOf(64, 1));
    EXPECT_EQ(store.find(1, "n63", "a0"), 0);

    EXPECT_EQ(refusalOf(2, attributesOf(65, 0)), "token 2 has 65 names, at most 64 are kept");

    EXPECT_FALSE(store.contains(2));
}

TEST_F(TokenStoreTest, Keeps64AttributesOfEachNameAndRefusesOneMore)
{
    store.create(1, attributesOf(64, 64));
    EXPECT_EQ(store.find(1, "n63", "a63"), 63);

    EXPECT_EQ(refusalOf(2, attributesOf(2, 65)), "token 2 has 65 attributes of one name, at most 64 are kept");

    EXPECT_FALSE(store.contains(2));
}

TEST_F(TokenStoreTest, CountsTheAttributesOfEveryName)
{
    Attributes attributes = attributesOf(1, 1);
    attributes.getValues()["z"] = attributesOf(1, 65).getValues().begin()->second;

    EXPECT_EQ(refusalOf(1, attributes), "token 1 has 65 attributes of one name, at most 64 are kept");
}

TEST_F(TokenStoreTest, LeavesATokenAsItWasWhenItsNewAttributesAreRefused)
{
    store.create(1, attribute("volume", "change", 1));

    EXPECT_THROW(store.create(1, attributesOf(65, 1)), std::length_error);
    EXPECT_THROW(store.create(1, attributesOf(1, 65)), std::length_error);

    EXPECT_EQ(store.find(1, "volume", "change"), 1);
    EXPECT_EQ(store.getCount(), 1U);
}

TEST_F(TokenStoreTest, ServesSeveralThreadsAtOnce)
{
    constexpr unsigned int THREADS = 4;
    constexpr unsigned int TOKENS = 500; // of each thread
    store.create(4294967295, attribute("volume", "change", 0));
    std::vector<std::jthread> threads;
    for (unsigned int thread = 0; thread < THREADS; ++thread)
        threads.emplace_back([this, thread] {
            for (unsigned int i = 0; i < TOKENS; ++i) {
                const unsigned int token = thread * TOKENS + i;
                store.create(token, attribute("volume", "change", static_cast<int>(token)));
                // The one token that all share keeps changing; it is always whole.
                store.create(4294967295, attribute("volume", "change", static_cast<int>(token)));
                EXPECT_TRUE(store.find(4294967295, "volume", "change").has_value());
                EXPECT_EQ(store.find(token, "volume", "change"), static_cast<int>(token));
                if (i % 2 == 1)
                    store.remove(token);
            }
        });
    threads.clear();

    EXPECT_EQ(store.getCount(), THREADS * TOKENS / 2 + 1);
    for (unsigned int token = 0; token < THREADS * TOKENS; ++token)
        EXPECT_EQ(store.contains(token), token % 2 == 0) << token;
}

} // namespace Corvane::Test
