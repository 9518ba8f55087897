#include "RenderingBase/host/visu/GraphicCardVendor.h"
#include "RenderingBase/host/visu/KVRGraphicCard.h"
#include "tests/support/TempFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr unsigned kNvidia = 0x10DE, kAmd = 0x1002, kIntel = 0x8086;

/// A tree like /sys, with what the test puts there.
class GraphicCard : public testing::Test {
protected:
    void putCard(const std::string& name, const std::string& vendor,
                 const std::string& bootVga = {}) const {
        putDevice("class/drm/" + name + "/device", vendor, bootVga);
    }
    void putPci(const std::string& address, const std::string& deviceClass,
                const std::string& vendor, const std::string& bootVga = {}) const {
        const std::string device = "bus/pci/devices/" + address;
        putDevice(device, vendor, bootVga);
        m_sysfs.write(device + "/class", deviceClass + "\n");
    }
    const rb::test::TempFolder& sysfs() const { return m_sysfs; }
    unsigned vendor() const { return rb::visu::graphicCardVendor(m_sysfs.path()); }

private:
    void putDevice(const std::string& device, const std::string& vendor,
                   const std::string& bootVga) const {
        m_sysfs.write(device + "/vendor", vendor + "\n");
        if (!bootVga.empty()) m_sysfs.write(device + "/boot_vga", bootVga + "\n");
    }
    rb::test::TempFolder m_sysfs;
};

TEST_F(GraphicCard, vendor_of_the_only_card) {
    putCard("card0", "0x10de");
    EXPECT_EQ(vendor(), kNvidia);
    EXPECT_EQ(vendor(), 4318U);
}

TEST_F(GraphicCard, no_vendor_when_there_is_nothing) {
    EXPECT_EQ(vendor(), 0U);
    EXPECT_EQ(rb::visu::graphicCardVendor(sysfs().file("missing")), 0U);
    EXPECT_EQ(rb::visu::graphicCardVendor(""), 0U);
}

TEST_F(GraphicCard, card_of_the_firmware_comes_first) {
    putCard("card0", "0x8086", "0");
    putCard("card1", "0x10de", "1");
    putCard("card2", "0x1002", "0");
    EXPECT_EQ(vendor(), kNvidia);
}

TEST_F(GraphicCard, first_card_counts_when_none_is_the_firmwares) {
    putCard("card1", "0x1002");
    putCard("card2", "0x10de", "0");
    EXPECT_EQ(vendor(), kAmd);
}

TEST_F(GraphicCard, cards_are_counted_by_their_numbers) {
    putCard("card10", "0x8086");
    putCard("card2", "0x10de");
    EXPECT_EQ(vendor(), kNvidia);
}

TEST_F(GraphicCard, connectors_and_other_entries_are_no_cards) {
    putCard("card0-HDMI-A-1", "0x8086", "1");
    putCard("card", "0x8086", "1");
    putCard("cardx", "0x8086", "1");
    putCard("renderD128", "0x8086", "1");
    putCard("card-1", "0x8086", "1");
    sysfs().write("class/drm/version", "drm 1.1.0 20060810\n");
    EXPECT_EQ(vendor(), 0U);
    putCard("card3", "0x1002");
    EXPECT_EQ(vendor(), kAmd);
}

TEST_F(GraphicCard, card_without_a_readable_vendor_is_passed_over) {
    int card = 0;
    for (const std::string broken : {"", "0x", "10de", "0x10dg", "0x10de 1", "nvidia", "-0x10de",
                                     "0x-10de", "0xffff", "0x0", "0x110de", "0xfffffffff10de"})
        putCard("card" + std::to_string(card++), broken, "1");
    putCard("card" + std::to_string(card++), "0x10de" + std::string(100000, '0'), "1");
    fs::create_directories(
        sysfs().file("class/drm/card" + std::to_string(card++) + "/device/vendor"));
    fs::create_directories(sysfs().file("class/drm/card" + std::to_string(card++)));
    EXPECT_EQ(vendor(), 0U);
    putCard("card99", "0x8086");
    EXPECT_EQ(vendor(), kIntel);
}

TEST_F(GraphicCard, largest_vendor_id_and_capital_digits_are_read) {
    putCard("card0", "0xFFFE");
    EXPECT_EQ(vendor(), 0xFFFEU);
}

TEST_F(GraphicCard, broken_boot_flag_counts_as_none) {
    putCard("card0", "0x8086");
    putCard("card1", "0x10de", "yes");
    putCard("card2", "0x1002", "11");
    EXPECT_EQ(vendor(), kIntel);
}

TEST_F(GraphicCard, links_are_followed_as_the_real_tree_has_them) {
    sysfs().write("devices/pci0000:00/0000:01:00.0/vendor", "0x10de\n");
    sysfs().write("devices/pci0000:00/0000:01:00.0/boot_vga", "1\n");
    fs::create_directories(sysfs().file("class/drm/card0"));
    fs::create_directory_symlink("../../../devices/pci0000:00/0000:01:00.0",
                                 sysfs().file("class/drm/card0/device"));
    fs::create_directory_symlink("nowhere", sysfs().file("class/drm/card1"));
    EXPECT_EQ(vendor(), kNvidia);
}

TEST_F(GraphicCard, pci_devices_of_the_display_class_stand_in_for_missing_cards) {
    putPci("0000:00:00.0", "0x060000", "0x8086");
    putPci("0000:01:00.1", "0x040300", "0x10de");
    putPci("0000:02:00.0", "0x030200", "0x1002");
    putPci("0000:03:00.0", "0x030000", "0x8086");
    EXPECT_EQ(vendor(), kAmd);
    putPci("0000:04:00.0", "0x030000", "0x10de", "1");
    EXPECT_EQ(vendor(), kNvidia);
}

// A folder lists its entries in any order.
TEST_F(GraphicCard, first_pci_device_is_the_one_with_the_lowest_address) {
    for (const char* address : {"0000:65:00.0", "0000:0a:00.0", "0000:03:00.1", "0000:03:00.0",
                                "0001:01:00.0", "0000:b3:00.0", "0000:17:02.0", "0000:17:0f.0"})
        putPci(address, "0x030000", std::string(address) == "0000:03:00.0" ? "0x1002" : "0x8086");
    EXPECT_EQ(vendor(), kAmd);
    putPci("0000:02:1f.7", "0x030000", "0x10de");
    EXPECT_EQ(vendor(), kNvidia);
    putPci("0000:00:02.0", "0x030000", "0x8086");
    EXPECT_EQ(vendor(), kIntel);
}

TEST_F(GraphicCard, pci_device_without_a_readable_class_is_no_display) {
    putPci("0000:00:01.0", "", "0x8086");
    putPci("0000:00:02.0", "030000", "0x8086");
    putPci("0000:00:03.0", "0x1030000", "0x8086");
    putPci("0000:00:04.0", "0x0003", "0x8086");
    EXPECT_EQ(vendor(), 0U);
}

TEST_F(GraphicCard, cards_count_more_than_pci_devices) {
    putPci("0000:00:02.0", "0x030000", "0x8086", "1");
    putCard("card0", "0x10de");
    EXPECT_EQ(vendor(), kNvidia);
}

TEST_F(GraphicCard, card_without_vendor_leaves_it_to_the_pci_devices) {
    fs::create_directories(sysfs().file("class/drm/card0/device"));
    putPci("0000:00:02.0", "0x038000", "0x1002");
    EXPECT_EQ(vendor(), kAmd);
}

TEST_F(GraphicCard, operation_of_the_host_reads_the_tree_of_this_machine) {
    EXPECT_EQ(KVRGetGraphicCardVendorID(), rb::visu::graphicCardVendor("/sys"));
}

}  // namespace
