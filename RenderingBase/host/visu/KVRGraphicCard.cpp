#include "RenderingBase/host/visu/KVRGraphicCard.h"

#include "RenderingBase/host/visu/GraphicCardVendor.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr unsigned kDisplayClass = 0x03;  // display controllers: PCI Code and ID Assignment, 1.4
constexpr unsigned kNoDevice = 0xFFFF;    // "invalid", PCI Local Bus 3.0, 6.2.1

template <class Number>
std::optional<Number> wholeNumber(std::string_view text, int base) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

// Attributes of devices are one short line.
std::string firstLine(const fs::path& file) {
    constexpr std::size_t kMostBytes = 64;
    char line[kMostBytes] = {};
    std::ifstream stream(file, std::ios::binary);
    stream.getline(line, sizeof line);
    return line;
}

// As in "0x10de".
std::optional<std::uint32_t> hexAttribute(const fs::path& file) {
    const std::string line = firstLine(file);
    if (!line.starts_with("0x")) return std::nullopt;
    return wholeNumber<std::uint32_t>(std::string_view(line).substr(2), 16);
}

// 0 when it cannot be read, or is none of the 16-bit numbers that stand for a vendor.
unsigned vendorOf(const fs::path& device) {
    const unsigned vendor = hexAttribute(device / "vendor").value_or(0);
    return vendor < kNoDevice ? vendor : 0;
}

bool isDisplay(const fs::path& device) {
    const auto code = hexAttribute(device / "class");  // class, subclass, interface: a byte each
    return code && *code >> 16 == kDisplayClass;
}

std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        entries.push_back(entry->path());
    return entries;
}

// The number in "card10"; none for a connector, as in "card0-HDMI-A-1".
std::optional<std::uint64_t> cardNumber(const fs::path& entry) {
    constexpr std::string_view kCard = "card";
    const std::string name = entry.filename().string();
    if (!name.starts_with(kCard)) return std::nullopt;
    return wholeNumber<std::uint64_t>(std::string_view(name).substr(kCard.size()), 10);
}

std::vector<fs::path> cardDevices(const fs::path& sysfs) {
    std::vector<std::pair<std::uint64_t, fs::path>> cards;
    for (const fs::path& entry : entriesOf(sysfs / "class/drm"))
        if (const auto number = cardNumber(entry)) cards.emplace_back(*number, entry / "device");
    std::sort(cards.begin(), cards.end());
    std::vector<fs::path> devices;
    devices.reserve(cards.size());
    for (auto& [number, device] : cards) devices.push_back(std::move(device));
    return devices;
}

std::vector<fs::path> pciDisplays(const fs::path& sysfs) {
    std::vector<fs::path> devices = entriesOf(sysfs / "bus/pci/devices");
    std::erase_if(devices, [](const fs::path& device) { return !isDisplay(device); });
    std::sort(devices.begin(), devices.end());  // addresses have leading zeros
    return devices;
}

unsigned vendorAmong(const std::vector<fs::path>& devices) {
    unsigned first = 0;
    for (const fs::path& device : devices) {
        const unsigned vendor = vendorOf(device);
        if (vendor != 0 && firstLine(device / "boot_vga") == "1") return vendor;
        if (first == 0) first = vendor;
    }
    return first;
}

}  // namespace

unsigned rb::visu::graphicCardVendor(const fs::path& sysfs) noexcept {
    try {
        const unsigned vendor = vendorAmong(cardDevices(sysfs));
        return vendor != 0 ? vendor : vendorAmong(pciDisplays(sysfs));
    } catch (...) {  // no memory
        return 0;
    }
}

unsigned KVRGetGraphicCardVendorID() { return rb::visu::graphicCardVendor("/sys"); }
