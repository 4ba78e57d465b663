#include "KernelDevices.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <linux/cec.h>
#include <linux/lirc.h>
#include <linux/uinput.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

namespace Corvane::Test
{

namespace
{

namespace Files = std::filesystem;

void require(bool condition, const std::string& what)
{
    if (!condition)
        throw std::system_error(errno, std::generic_category(), what);
}

FileDescriptor openNode(const std::string& path, int mode)
{
    FileDescriptor descriptor(open(path.c_str(), mode | O_CLOEXEC));
    require(descriptor.isOpen(), path);
    return descriptor;
}

std::string readAll(const Files::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// @return the name of the first entry below the folder, or below the folders in it, that begins like that
std::string findBelow(const Files::path& folder, const std::string& beginning)
{
    for (const auto& entry : Files::recursive_directory_iterator(folder))
        if (entry.path().filename().string().starts_with(beginning) && entry.is_directory())
            return entry.path().filename();
    throw std::runtime_error("no " + beginning + " below " + folder.string());
}

/// Gives an adapter its logical address, which takes the kernel a moment on the cable.
void setAddress(const FileDescriptor& adapter, std::uint8_t type, std::uint8_t device)
{
    cec_log_addrs none{};
    require(ioctl(adapter.get(), CEC_ADAP_S_LOG_ADDRS, &none) == 0, "CEC_ADAP_S_LOG_ADDRS");
    cec_log_addrs addresses{};
    addresses.num_log_addrs = 1;
    addresses.cec_version = CEC_OP_CEC_VERSION_1_4;
    addresses.vendor_id = CEC_VENDOR_ID_NONE;
    addresses.flags = CEC_LOG_ADDRS_FL_ALLOW_RC_PASSTHRU;
    addresses.log_addr_type[0] = type;
    addresses.primary_device_type[0] = device;
    std::strcpy(addresses.osd_name, "test");
    require(ioctl(adapter.get(), CEC_ADAP_S_LOG_ADDRS, &addresses) == 0, "CEC_ADAP_S_LOG_ADDRS");
}

} // namespace

UinputDevice::UinputDevice(const std::string& name, const std::set<unsigned int>& keys,
                           const std::set<unsigned int>& axes)
    : device(openNode("/dev/uinput", O_WRONLY))
{
    for (const int type : {EV_KEY, EV_REL, EV_MSC})
        require(ioctl(device.get(), UI_SET_EVBIT, type) == 0, "UI_SET_EVBIT");
    for (const unsigned int key : keys)
        require(ioctl(device.get(), UI_SET_KEYBIT, key) == 0, "UI_SET_KEYBIT");
    for (const unsigned int axis : axes)
        require(ioctl(device.get(), UI_SET_RELBIT, axis) == 0, "UI_SET_RELBIT");
    require(ioctl(device.get(), UI_SET_MSCBIT, MSC_SCAN) == 0, "UI_SET_MSCBIT");
    uinput_setup setup{};
    setup.id = {.bustype = BUS_USB, .vendor = 0x1234, .product = 0x5678, .version = 1};
    name.copy(setup.name, sizeof setup.name - 1);
    require(ioctl(device.get(), UI_DEV_SETUP, &setup) == 0, "UI_DEV_SETUP");
    require(ioctl(device.get(), UI_DEV_CREATE) == 0, "UI_DEV_CREATE");
}

void UinputDevice::report(std::initializer_list<Event> events)
{
    std::vector<Event> frame(events);
    frame.push_back({EV_SYN, SYN_REPORT, 0});
    for (const Event& one : frame) {
        input_event event{};
        event.type = static_cast<std::uint16_t>(one.type);
        event.code = static_cast<std::uint16_t>(one.code);
        event.value = one.value;
        require(write(device.get(), &event, sizeof event) == sizeof event, "uinput");
    }
}

void UinputDevice::press(unsigned int code)
{
    report({{EV_KEY, code, 1}});
}

void UinputDevice::release(unsigned int code)
{
    report({{EV_KEY, code, 0}});
}

std::optional<LoopbackRemote> LoopbackRemote::find()
{
    if (!Files::exists("/sys/class/rc"))
        return {};
    for (const auto& receiver : Files::directory_iterator("/sys/class/rc"))
        if (readAll(receiver.path() / "uevent").find("DRV_NAME=rc-loopback") != std::string::npos) {
            const Files::path folder = Files::canonical(receiver.path());
            return LoopbackRemote(folder, "/dev/" + findBelow(folder, "lirc"),
                                  "/dev/input/" + findBelow(folder, "event"));
        }
    return {};
}

LoopbackRemote::LoopbackRemote(const std::string& folder, const std::string& sender, const std::string& receiver)
    : sender(openNode(sender, O_RDWR)), receiver(openNode(receiver, O_RDWR))
{
    std::ofstream protocols(folder + "/protocols");
    require(static_cast<bool>(protocols << "+nec" << std::flush), "protocols");
    std::uint32_t mode = LIRC_MODE_SCANCODE;
    require(ioctl(this->sender.get(), LIRC_SET_SEND_MODE, &mode) == 0, "LIRC_SET_SEND_MODE");
}

void LoopbackRemote::setKey(std::uint32_t scanCode, std::uint32_t key) const
{
    input_keymap_entry entry{};
    entry.len = sizeof scanCode;
    entry.keycode = key;
    std::memcpy(entry.scancode, &scanCode, sizeof scanCode);
    require(ioctl(receiver.get(), EVIOCSKEYCODE_V2, &entry) == 0, "EVIOCSKEYCODE_V2");
}

void LoopbackRemote::send(std::uint32_t scanCode) const
{
    lirc_scancode message{};
    message.rc_proto = RC_PROTO_NEC;
    message.scancode = scanCode;
    require(write(sender.get(), &message, sizeof message) == sizeof message, "lirc");
}

std::optional<CecCable> CecCable::find()
{
    std::optional<FileDescriptor> television;
    std::optional<FileDescriptor> box;
    for (int i = 0; Files::exists("/dev/cec" + std::to_string(i)); ++i) {
        FileDescriptor adapter = openNode("/dev/cec" + std::to_string(i), O_RDWR);
        std::uint16_t place = 0;
        require(ioctl(adapter.get(), CEC_ADAP_G_PHYS_ADDR, &place) == 0, "CEC_ADAP_G_PHYS_ADDR");
        // The television is the root of the tree of cables.
        std::optional<FileDescriptor>& side = place == 0 ? television : box;
        if (!side)
            side = std::move(adapter);
    }
    if (!television || !box)
        return {};
    return CecCable(std::move(*television), std::move(*box));
}

CecCable::CecCable(FileDescriptor television, FileDescriptor box)
    : television(std::move(television)), box(std::move(box))
{
    setAddress(this->television, CEC_LOG_ADDR_TYPE_TV, CEC_OP_PRIM_DEVTYPE_TV);
    setAddress(this->box, CEC_LOG_ADDR_TYPE_PLAYBACK, CEC_OP_PRIM_DEVTYPE_PLAYBACK);
}

void CecCable::press(std::uint8_t command)
{
    send({CEC_MSG_USER_CONTROL_PRESSED, command});
}

void CecCable::release()
{
    send({CEC_MSG_USER_CONTROL_RELEASED});
}

void CecCable::send(const std::vector<std::uint8_t>& message)
{
    cec_log_addrs addresses{};
    require(ioctl(box.get(), CEC_ADAP_G_LOG_ADDRS, &addresses) == 0, "CEC_ADAP_G_LOG_ADDRS");
    cec_msg sent{};
    sent.msg[0] = static_cast<std::uint8_t>(CEC_LOG_ADDR_TV << 4 | addresses.log_addr[0]);
    std::ranges::copy(message, sent.msg + 1);
    sent.len = static_cast<std::uint32_t>(message.size() + 1);
    require(ioctl(television.get(), CEC_TRANSMIT, &sent) == 0, "CEC_TRANSMIT");
    if ((sent.tx_status & CEC_TX_STATUS_OK) == 0)
        throw std::runtime_error("the box does not take the message of the television");
}

} // namespace Corvane::Test
