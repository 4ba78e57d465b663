#include "MockDevice.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <support/Await.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <umockdev-1.0/umockdev.h>
#include <unistd.h>

namespace Corvane::Test
{

namespace
{

/// Numbers are never used twice: a process has one set of mock devices after the other.
int takeNumber()
{
    static int next = 0;
    return next++;
}

std::set<unsigned int> range(unsigned int first, unsigned int last)
{
    std::set<unsigned int> codes;
    for (unsigned int code = first; code <= last; ++code)
        codes.insert(code);
    return codes;
}

void require(bool condition, const std::string& problem)
{
    if (!condition)
        throw std::runtime_error(problem + ": " + std::strerror(errno));
}

void takeError(GError* error)
{
    if (error != nullptr)
        throw std::runtime_error(error->message);
}

template <class T>
long put(const T& value, std::vector<unsigned char>& data)
{
    std::memcpy(data.data(), &value, std::min(sizeof value, data.size()));
    return 0;
}

long put(const std::string& text, std::vector<unsigned char>& data)
{
    std::memcpy(data.data(), text.c_str(), std::min(text.size() + 1, data.size()));
    return static_cast<long>(text.size() + 1);
}

long put(const std::set<unsigned int>& bits, std::vector<unsigned char>& data)
{
    for (unsigned int bit : bits)
        if (bit / 8 < data.size())
            data[bit / 8] = static_cast<unsigned char>(data[bit / 8] | 1U << bit % 8);
    return static_cast<long>(data.size());
}

input_event makeEvent(const Report& report)
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now);
    input_event event{};
    event.input_event_sec = static_cast<decltype(event.input_event_sec)>(seconds.count());
    event.input_event_usec = static_cast<decltype(event.input_event_usec)>(
        std::chrono::duration_cast<std::chrono::microseconds>(now - seconds).count());
    event.type = static_cast<std::uint16_t>(report.type);
    event.code = static_cast<std::uint16_t>(report.code);
    event.value = report.value;
    return event;
}

/// The codes of a type as the kernel shows them in a file. They fit into one of its words.
std::string listBits(const DeviceSpecification& specification, unsigned int type)
{
    unsigned int bits = 0;
    if (const auto codes = specification.codes.find(type); codes != specification.codes.end())
        for (const unsigned int code : codes->second)
            bits |= 1U << code;
    char text[16];
    std::snprintf(text, sizeof text, "%x", bits);
    return text;
}

} // namespace

DeviceSpecification mouse()
{
    return {.name = "Mouse",
            .path = "/devices/usb/1-",
            .properties = {{"ID_INPUT", "1"}, {"ID_INPUT_MOUSE", "1"}},
            .codes = {{EV_KEY, range(BTN_LEFT, BTN_EXTRA)},
                      {EV_REL, {REL_X, REL_Y, REL_WHEEL, REL_WHEEL_HI_RES, REL_HWHEEL}}}};
}

DeviceSpecification keyboard()
{
    return {.name = "Keyboard",
            .path = "/devices/usb/1-",
            .properties = {{"ID_INPUT", "1"}, {"ID_INPUT_KEY", "1"}, {"ID_INPUT_KEYBOARD", "1"}},
            .codes = {{EV_KEY, range(KEY_ESC, KEY_COMPOSE)},
                      {EV_LED, {LED_NUML, LED_CAPSL}},
                      {EV_REP, {REP_DELAY, REP_PERIOD}}}};
}

DeviceSpecification tablet()
{
    const input_absinfo axis{.value = 0, .minimum = 0, .maximum = 32767, .fuzz = 0, .flat = 0, .resolution = 0};
    return {.name = "Tablet",
            .path = "/devices/usb/1-",
            .properties = {{"ID_INPUT", "1"}, {"ID_INPUT_MOUSE", "1"}},
            .codes = {{EV_KEY, range(BTN_LEFT, BTN_MIDDLE)}, {EV_REL, {REL_WHEEL}}, {EV_ABS, {ABS_X, ABS_Y}}},
            .axes = {{ABS_X, axis}, {ABS_Y, axis}}};
}

DeviceSpecification keyboardWithTrackBall()
{
    DeviceSpecification both = keyboard();
    both.name = "Keyboard with a track ball";
    both.properties.merge(mouse().properties);
    both.codes.merge(mouse().codes);
    both.codes[EV_KEY].merge(mouse().codes[EV_KEY]);
    return both;
}

DeviceSpecification infrared()
{
    std::set<unsigned int> keys = range(KEY_OK, KEY_NUMERIC_POUND);
    keys.merge(range(KEY_ESC, KEY_PAUSE));
    // Such receivers say that they are keyboards and mice as well.
    return {
        .name = "Receiver",
        .path = "/devices/platform/rc/rc",
        .bus = BUS_HOST,
        .properties = {{"ID_INPUT", "1"}, {"ID_INPUT_KEY", "1"}, {"ID_INPUT_KEYBOARD", "1"}, {"ID_INPUT_MOUSE", "1"}},
        .codes = {{EV_KEY, keys}, {EV_REL, {REL_X, REL_Y}}, {EV_MSC, {MSC_SCAN}}},
        .isReceiver = true};
}

DeviceSpecification knob()
{
    return {.name = "Knob",
            .path = "/devices/platform/rotary",
            .bus = BUS_HOST,
            .properties = {{"ID_INPUT", "1"}},
            .codes = {{EV_REL, {REL_DIAL}}}};
}

DeviceSpecification onSeat(DeviceSpecification specification, const std::string& seat)
{
    specification.properties["ID_SEAT"] = seat;
    return specification;
}

MockMachine::MockMachine() : testbed(umockdev_testbed_new())
{
    // Without its library in front of the real one the tests would look at the devices of this machine.
    if (umockdev_in_mock_environment() == FALSE)
        throw std::runtime_error("the mock devices are not in the place of the real ones");
    std::filesystem::create_directories(locate("/dev/input"));
}

MockMachine::~MockMachine()
{
    g_object_unref(testbed);
}

std::string MockMachine::locate(const std::string& path) const
{
    gchar* const root = umockdev_testbed_get_root_dir(testbed);
    const std::string result = root + path;
    g_free(root);
    return result;
}

void MockMachine::add(const std::string& description)
{
    GError* error = nullptr;
    umockdev_testbed_add_from_string(testbed, description.c_str(), &error);
    takeError(error);
}

/// What the device says of itself when it is asked.
class MockDevice::Answers
{
public:
    explicit Answers(const DeviceSpecification& specification)
        : specification(specification), keysDown(specification.keysDown)
    {
    }

    void setKey(unsigned int code, bool isDown)
    {
        std::lock_guard guard(mutex);
        if (isDown)
            keysDown.insert(code);
        else
            keysDown.erase(code);
    }

    Repeat getRepeat() const
    {
        std::lock_guard guard(mutex);
        return repeat;
    }

    static int onIoctl(UMockdevIoctlBase* handler, UMockdevIoctlClient* client, void* answers);
    static void forget(void* answers, GClosure*) { delete static_cast<std::shared_ptr<Answers>*>(answers); }

private:
    long answer(unsigned long request, std::vector<unsigned char>& data);
    std::set<unsigned int> findBits(unsigned int type) const;

    const DeviceSpecification specification;
    mutable std::mutex mutex;
    std::set<unsigned int> keysDown;
    Repeat repeat{250, 33}; ///< the kernel's
};

int MockDevice::Answers::onIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, void* answers)
{
    // The device may be destroyed as soon as it has answered: what it answers with is held, not only looked at.
    const std::shared_ptr<Answers> held = *static_cast<std::shared_ptr<Answers>*>(answers);
    const gulong request = umockdev_ioctl_client_get_request(client);
    std::vector<unsigned char> data(_IOC_SIZE(request));
    UMockdevIoctlData* const argument =
        umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, data.size(), nullptr);
    if (argument != nullptr && _IOC_DIR(request) == _IOC_WRITE)
        std::copy_n(argument->data, data.size(), data.begin());
    const long result = held->answer(request, data);
    if (result >= 0 && argument != nullptr && _IOC_DIR(request) == _IOC_READ)
        umockdev_ioctl_data_update(argument, 0, data.data(), static_cast<gint>(data.size()));
    umockdev_ioctl_client_complete(client, result < 0 ? -1 : result, result < 0 ? static_cast<gint>(-result) : 0);
    if (argument != nullptr)
        g_object_unref(argument);
    return TRUE;
}

long MockDevice::Answers::answer(unsigned long request, std::vector<unsigned char>& data)
{
    constexpr unsigned int FIRST_BITS = _IOC_NR(EVIOCGBIT(0, 0));
    constexpr unsigned int FIRST_AXIS = _IOC_NR(EVIOCGABS(0));
    const unsigned int number = _IOC_NR(request);
    if (request == EVIOCGVERSION)
        return put(EV_VERSION, data);
    if (request == EVIOCGID)
        return put(input_id{specification.bus, 1, 1, 1}, data);
    if (number == _IOC_NR(EVIOCGNAME(0)))
        return put(specification.name, data);
    if (number >= FIRST_BITS && number < FIRST_BITS + EV_CNT)
        return put(findBits(number - FIRST_BITS), data);
    if (number >= FIRST_AXIS && number < FIRST_AXIS + ABS_CNT && specification.axes.contains(number - FIRST_AXIS))
        return put(specification.axes.at(number - FIRST_AXIS), data);
    if (number == _IOC_NR(EVIOCGLED(0)))
        return put(specification.ledsOn, data);
    if (number == _IOC_NR(EVIOCGPROP(0)))
        return put(specification.traits, data);
    if (number == _IOC_NR(EVIOCGSW(0)))
        return static_cast<long>(data.size());
    std::lock_guard guard(mutex);
    if (request == EVIOCGREP)
        return put(repeat, data);
    if (request == EVIOCSREP) {
        std::memcpy(&repeat, data.data(), sizeof repeat);
        return 0;
    }
    return number == _IOC_NR(EVIOCGKEY(0)) ? put(keysDown, data) : -ENOENT;
}

std::set<unsigned int> MockDevice::Answers::findBits(unsigned int type) const
{
    if (type != EV_SYN) {
        const auto codes = specification.codes.find(type);
        return codes != specification.codes.end() ? codes->second : std::set<unsigned int>{};
    }
    std::set<unsigned int> types{EV_SYN};
    for (const auto& [present, codes] : specification.codes)
        types.insert(present);
    return types;
}

MockDevice::MockDevice(MockMachine& machine, DeviceSpecification given)
    : machine(machine), specification(std::move(given)), answers(std::make_shared<Answers>(specification))
{
    const std::string number = std::to_string(takeNumber());
    hardware = specification.path + number;
    folder = hardware + "/input/input" + number + "/event" + number;
    node = "/dev/input/event" + number;
    // A named pipe keeps whole events together, which the terminals that the library would make do not.
    const std::string file = machine.locate(node);
    require(mkfifo(file.c_str(), S_IRUSR | S_IWUSR) == 0, file);
    descriptor = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
    require(descriptor >= 0, file);
    require(fstat(descriptor, &identity) == 0, file);
    connect();
    machine.add(describe());
}

MockDevice::~MockDevice()
{
    if (descriptor >= 0)
        unplug();
    g_object_unref(handler);
}

void MockDevice::connect()
{
    handler = umockdev_ioctl_base_new();
    g_signal_connect_data(handler, "handle-ioctl", G_CALLBACK(Answers::onIoctl), new std::shared_ptr<Answers>(answers),
                          Answers::forget, GConnectFlags{});
    GError* error = nullptr;
    umockdev_testbed_attach_ioctl(machine.get(), node.c_str(), handler, &error);
    takeError(error);
}

std::string MockDevice::describe() const
{
    std::string text;
    if (specification.isReceiver)
        text += "P: " + hardware + "\nE: SUBSYSTEM=rc\n\n";
    char bus[8];
    std::snprintf(bus, sizeof bus, "%04x", static_cast<unsigned int>(specification.bus));
    text += "P: " + folder.substr(0, folder.rfind('/')) + "\nE: SUBSYSTEM=input\nA: name=" + specification.name +
            "\nA: id/bustype=" + bus +
            "\nA: id/vendor=0001\nA: id/product=0001\nA: capabilities/rel=" + listBits(specification, EV_REL) + "\n\n";
    text += "P: " + folder + "\nE: SUBSYSTEM=input\nE: DEVNAME=" + node + "\nE: MAJOR=13\nE: MINOR=64\n";
    for (const auto& [name, value] : specification.properties)
        text += "E: " + name + "=" + value + "\n";
    return text + "A: dev=13:64\n";
}

void MockDevice::report(const std::vector<Report>& reports)
{
    std::vector<Report> frame = reports;
    frame.push_back({EV_SYN, SYN_REPORT, 0});
    reportOpenFrame(frame);
}

void MockDevice::reportOpenFrame(const std::vector<Report>& reports)
{
    std::vector<input_event> events;
    for (const Report& report : reports) {
        events.push_back(makeEvent(report));
        if (report.type == EV_KEY)
            answers->setKey(report.code, report.value != 0);
    }
    const auto size = static_cast<ssize_t>(events.size() * sizeof(input_event));
    require(write(descriptor, events.data(), static_cast<std::size_t>(size)) == size, node);
}

void MockDevice::lose(const std::vector<Report>& lost)
{
    for (const Report& report : lost)
        answers->setKey(report.code, report.value != 0);
    report({{EV_SYN, SYN_DROPPED, 0}});
}

void MockDevice::unplug()
{
    // As in reality the node goes first, and then the message.
    hangUp();
    const std::string device = "/sys" + folder;
    umockdev_testbed_uevent(machine.get(), device.c_str(), "remove");
    umockdev_testbed_remove_device(machine.get(), device.c_str());
    // The mock library ends the process when a device that somebody reads has nobody any more who answers for it.
    await([this] { return !isOpen(); });
    umockdev_testbed_detach_ioctl(machine.get(), node.c_str(), nullptr);
}

void MockDevice::hangUp()
{
    if (descriptor < 0)
        return;
    unlink(machine.locate(node).c_str());
    close(descriptor);
    descriptor = -1;
}

void MockDevice::fail()
{
    // A piece of an event: no reader can make anything of it.
    require(write(descriptor, "?", 1) == 1, node);
}

void MockDevice::announce(const std::string& action, const std::map<std::string, std::string>& newProperties)
{
    const std::string device = "/sys" + folder;
    for (const auto& [name, value] : newProperties)
        umockdev_testbed_set_property(machine.get(), device.c_str(), name.c_str(), value.c_str());
    umockdev_testbed_uevent(machine.get(), device.c_str(), action.c_str());
}

bool MockDevice::isOpen() const
{
    // Asked of the system: it knows at once of a descriptor that was closed.
    const auto isNode = [&](const std::filesystem::directory_entry& file) {
        struct stat status {
        };
        return file.path().filename() != std::to_string(descriptor) && stat(file.path().c_str(), &status) == 0 &&
               status.st_dev == identity.st_dev && status.st_ino == identity.st_ino;
    };
    return std::ranges::any_of(std::filesystem::directory_iterator("/proc/self/fd"), isNode);
}

Repeat MockDevice::getRepeat() const
{
    return answers->getRepeat();
}

bool MockDevice::hasUnread() const
{
    int count = 0;
    ioctl(descriptor, FIONREAD, &count);
    return count != 0;
}

} // namespace Corvane::Test

// In the place of the mock library's, which it calls. That one answers whether a file is part of the mock machine from
// buffers that all threads share: of two that ask at once, libudev in the driver and libudev in the mock library
// itself, one may be told that a device is none.
extern "C" __attribute__((visibility("default"))) int fstatfs64(int descriptor, struct statfs64* status) noexcept
{
    using Function = int (*)(int, struct statfs64*);
    static const auto MOCKED = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "fstatfs64"));
    static std::mutex mutex;
    std::lock_guard guard(mutex);
    return MOCKED(descriptor, status);
}
