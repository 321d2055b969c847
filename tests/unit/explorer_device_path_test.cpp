#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "explorer/storage/device_path_text.h"
#include "explorer/storage/load_option.h"

namespace korvane {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes operator+(Bytes left, const Bytes& right) {
    for (const std::uint8_t byte : right)
        left.push_back(byte);
    return left;
}

Bytes node(std::uint8_t type, std::uint8_t sub_type, const Bytes& body) {
    const auto length = body.size() + 4;
    return Bytes{type, sub_type, static_cast<std::uint8_t>(length), static_cast<std::uint8_t>(length >> 8)} +
           body;
}

Bytes utf16(std::string_view text, bool terminated = true) {
    Bytes bytes;
    for (const char character : text)
        bytes = bytes + Bytes{static_cast<std::uint8_t>(character), 0};
    return terminated ? bytes + Bytes{0, 0} : bytes;
}

const Bytes end_node = {0x7F, 0xFF, 4, 0};

std::string text_of(std::uint8_t type, std::uint8_t sub_type, const Bytes& body) {
    const DevicePathElement element{type, sub_type, body};
    return std::string(device_path_node_text(element).view());
}

// Bodies laid out by hand from UEFI 2.10, section 10.3.
TEST(DevicePathText, HardwareAndAcpiNodes) {
    EXPECT_EQ(text_of(1, 1, {0x02, 0x1F}), "Pci(0x1F,0x2)");
    EXPECT_EQ(text_of(2, 1, {0xD0, 0x41, 0x03, 0x0A, 0, 0, 0, 0}), "PciRoot(0x0)");
    EXPECT_EQ(text_of(2, 1, {0xD0, 0x41, 0x08, 0x0A, 1, 0, 0, 0}), "PcieRoot(0x1)");
    EXPECT_EQ(text_of(2, 1, {0xD0, 0x41, 0x01, 0x05, 2, 0, 0, 0}), "Acpi(PNP0501,0x2)");
    EXPECT_EQ(text_of(1, 3, {11, 0, 0, 0, 0, 0, 0x82, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0x82, 0, 0, 0, 0, 0}),
              "MemoryMapped(0xB,0x820000,0x82FFFF)");
    EXPECT_EQ(text_of(1, 5, {3, 0, 0, 0}), "Ctrl(0x3)");
}

TEST(DevicePathText, VendorNodesShowIdentifierAndData) {
    const Bytes guid = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66, 8, 9, 10, 11, 12, 13, 14, 15};
    EXPECT_EQ(text_of(1, 4, guid), "VenHw(00112233-4455-6677-0809-0A0B0C0D0E0F)");
    EXPECT_EQ(text_of(3, 10, guid + Bytes{0xAB, 0xCD}), "VenMsg(00112233-4455-6677-0809-0A0B0C0D0E0F,ABCD)");
    EXPECT_EQ(text_of(4, 7, guid), "Fv(00112233-4455-6677-0809-0A0B0C0D0E0F)");
    EXPECT_EQ(text_of(4, 6, guid), "FvFile(00112233-4455-6677-0809-0A0B0C0D0E0F)");
    const std::string cut = text_of(4, 3, guid + Bytes(33, 0x5A));
    EXPECT_EQ(cut.substr(cut.size() - 8), "5A5A...)");
}

TEST(DevicePathText, MessagingNodes) {
    EXPECT_EQ(text_of(3, 1, {1, 0, 0, 0}), "Ata(Secondary,Master,0x0)");
    EXPECT_EQ(text_of(3, 2, {5, 0, 0, 0}), "Scsi(0x5,0x0)");
    EXPECT_EQ(text_of(3, 5, {3, 1}), "USB(0x3,0x1)");
    EXPECT_EQ(text_of(3, 18, {1, 0, 0xFF, 0xFF, 0, 0}), "Sata(0x1,0xFFFF,0x0)");
    EXPECT_EQ(text_of(3, 23, {1, 0, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1}), "NVMe(0x1,01-02-03-04-05-06-07-08)");
    EXPECT_EQ(text_of(3, 11, Bytes{0x52, 0x54, 0, 0x12, 0x34, 0x56} + Bytes(26, 0) + Bytes{1}),
              "MAC(525400123456,0x1)");
    EXPECT_EQ(text_of(3, 12, Bytes{10, 0, 0, 2, 192, 168, 1, 254, 0, 0, 0, 0, 17, 0, 0} + Bytes(8, 0)),
              "IPv4(192.168.1.254,UDP,DHCP,10.0.0.2)");
    EXPECT_EQ(text_of(3, 24, {'h', 't', 't', 'p'}), "Uri(http)");
    EXPECT_EQ(text_of(3, 24, {}), "Uri()");
}

TEST(DevicePathText, MediaNodes) {
    const Bytes range = {0, 8, 0, 0, 0, 0, 0, 0, 0, 0x10, 0, 0, 0, 0, 0, 0};
    const Bytes guid = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66, 8, 9, 10, 11, 12, 13, 14, 15};
    EXPECT_EQ(text_of(4, 1, Bytes{1, 0, 0, 0} + range + guid + Bytes{2, 2}),
              "HD(1,GPT,00112233-4455-6677-0809-0A0B0C0D0E0F,0x800,0x1000)");
    EXPECT_EQ(text_of(4, 1, Bytes{2, 0, 0, 0} + range + guid + Bytes{1, 1}),
              "HD(2,MBR,0x112233,0x800,0x1000)");
    EXPECT_EQ(text_of(4, 2, Bytes{0, 0, 0, 0} + range), "CDROM(0x0,0x800,0x1000)");
    EXPECT_EQ(text_of(4, 4, utf16("\\EFI\\BOOT\\BOOTX64.EFI")), "\\EFI\\BOOT\\BOOTX64.EFI");
    EXPECT_EQ(text_of(4, 4, utf16("a", false) + Bytes{'b'}), "a");
    EXPECT_EQ(text_of(5, 1, Bytes{2, 0, 0, 0, 'D', 0}), "BBS(HD,D)");
}

// A node of every kind, with bytes that are all different where they count.
TEST(DevicePathText, EveryKindOfNodeShowsItsFields) {
    const Bytes guid = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66, 8, 9, 10, 11, 12, 13, 14, 15};
    const std::string guid_text = "00112233-4455-6677-0809-0A0B0C0D0E0F";
    const Bytes range = {1, 2, 3, 4, 5, 6, 7, 8, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18};
    const std::string range_text = "0x807060504030201,0x1817161514131211";
    EXPECT_EQ(text_of(1, 2, {7}), "PcCard(0x7)");
    EXPECT_EQ(text_of(1, 3, Bytes{0x21, 0x22, 0x23, 0x24} + range),
              "MemoryMapped(0x24232221," + range_text + ")");
    EXPECT_EQ(text_of(1, 6, Bytes{9, 1, 2, 3, 4, 5, 6, 7, 8}), "BMC(0x9,0x807060504030201)");
    EXPECT_EQ(text_of(2, 1, {1, 2, 3, 4, 5, 6, 7, 8}), "Acpi(0x4030201,0x8070605)");
    EXPECT_EQ(text_of(2, 3, {1, 2, 3, 0x80}), "AcpiAdr(0x80030201)");
    EXPECT_EQ(text_of(3, 1, {0, 1, 3, 2}), "Ata(Primary,Slave,0x203)");
    EXPECT_EQ(text_of(3, 1, {0, 0, 3, 2}), "Ata(Primary,Master,0x203)");
    EXPECT_EQ(text_of(3, 2, {1, 2, 3, 4}), "Scsi(0x201,0x403)");
    EXPECT_EQ(text_of(3, 6, {1, 2, 3, 4}), "I2O(0x4030201)");
    EXPECT_EQ(text_of(3, 15, {1, 2, 3, 4, 5, 6, 7}), "UsbClass(0x201,0x403,0x5,0x6,0x7)");
    EXPECT_EQ(text_of(3, 16, Bytes{1, 2, 3, 4, 5, 6} + utf16("S1")), "UsbWwid(0x403,0x605,0x201,\"S1\")");
    EXPECT_EQ(text_of(3, 17, {4}), "Unit(0x4)");
    EXPECT_EQ(text_of(3, 18, {1, 2, 3, 4, 5, 6}), "Sata(0x201,0x403,0x605)");
    EXPECT_EQ(text_of(3, 19, Bytes{0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10} + Bytes{'i', 'q', 'n', 0, 'x'}),
              "iSCSI(iqn,0xA09,0x0102030405060708)");
    EXPECT_EQ(text_of(3, 20, {1, 2}), "Vlan(0x201)");
    EXPECT_EQ(text_of(3, 23, {1, 2, 3, 4, 11, 12, 13, 14, 15, 16, 17, 18}),
              "NVMe(0x4030201,12-11-10-0F-0E-0D-0C-0B)");
    EXPECT_EQ(text_of(3, 25, {1, 2}), "UFS(0x1,0x2)");
    EXPECT_EQ(text_of(3, 26, {1}), "SD(0x1)");
    EXPECT_EQ(text_of(3, 29, {2}), "eMMC(0x2)");
    EXPECT_EQ(text_of(4, 2, Bytes{1, 2, 3, 4} + range), "CDROM(0x4030201," + range_text + ")");
    EXPECT_EQ(text_of(4, 3, guid + Bytes{1}), "VenMedia(" + guid_text + ",01)");
    EXPECT_EQ(text_of(4, 5, guid), "Media(" + guid_text + ")");
    EXPECT_EQ(text_of(4, 6, guid), "FvFile(" + guid_text + ")");
    EXPECT_EQ(text_of(4, 9, range + guid + Bytes{1, 2}), "RamDisk(" + range_text + ",513," + guid_text + ")");
}

TEST(DevicePathText, AddressesOfTheNetwork) {
    const Bytes local = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const Bytes remote = {0x20, 0x01, 0x0D, 0xB8, 0x12, 0x34, 0xFF, 0xFE, 0xF1, 0x0F, 0, 0, 0, 1, 0x80, 0xA0};
    EXPECT_EQ(text_of(3, 13, local + remote), "IPv6(2001:0DB8:1234:FFFE:F10F:0000:0001:80A0)");
    EXPECT_EQ(text_of(3, 13, local + Bytes(15, 0)).substr(0, 10), "Path(3,13,");
    // The type of the interface tells how long its address is: 6 bytes for Ethernet, 0 and 1.
    const Bytes address = local + local;
    EXPECT_EQ(text_of(3, 11, address + Bytes{0}), "MAC(010203040506,0x0)");
    EXPECT_EQ(text_of(3, 11, address + Bytes{2}),
              "MAC(0102030405060708090A0B0C0D0E0F100102030405060708090A0B0C0D0E0F10,0x2)");
    // A protocol without a name is left out.
    const auto ip_version_4 = [](std::uint8_t protocol, std::uint8_t protocol_high, std::uint8_t is_static) {
        return text_of(3, 12,
                       {10, 0, 0, 2, 192, 168, 1, 254, 0, 0, 0, 0, protocol, protocol_high, is_static});
    };
    EXPECT_EQ(ip_version_4(6, 0, 1), "IPv4(192.168.1.254,TCP,Static,10.0.0.2)");
    EXPECT_EQ(ip_version_4(17, 0, 0), "IPv4(192.168.1.254,UDP,DHCP,10.0.0.2)");
    EXPECT_EQ(ip_version_4(17, 1, 0), "IPv4(192.168.1.254,DHCP,10.0.0.2)");
    EXPECT_EQ(ip_version_4(5, 0, 1), "IPv4(192.168.1.254,Static,10.0.0.2)");
}

TEST(DevicePathText, OlderWaysToBoot) {
    const auto boot = [](std::uint8_t type, std::uint8_t type_high) {
        return text_of(5, 1, {type, type_high, 1, 2, 'A', 'b', 0, 'c'});
    };
    EXPECT_EQ(boot(0, 0), "BBS(0x0,Ab)");
    EXPECT_EQ(boot(1, 0), "BBS(Floppy,Ab)");
    EXPECT_EQ(boot(2, 0), "BBS(HD,Ab)");
    EXPECT_EQ(boot(3, 0), "BBS(CDROM,Ab)");
    EXPECT_EQ(boot(4, 0), "BBS(PCMCIA,Ab)");
    EXPECT_EQ(boot(5, 0), "BBS(USB,Ab)");
    EXPECT_EQ(boot(6, 0), "BBS(Network,Ab)");
    EXPECT_EQ(boot(7, 0), "BBS(0x7,Ab)");
    EXPECT_EQ(boot(1, 1), "BBS(0x101,Ab)");
}

TEST(DevicePathText, DriveSignaturesOfOtherKinds) {
    const Bytes range = {0, 8, 0, 0, 0, 0, 0, 0, 0, 0x10, 0, 0, 0, 0, 0, 0};
    const Bytes signature(16, 0x5A);
    EXPECT_EQ(text_of(4, 1, Bytes{1, 1, 0, 0} + range + signature + Bytes{1, 0}), "HD(257,0,0,0x800,0x1000)");
    EXPECT_EQ(text_of(4, 1, Bytes{1, 1, 0, 0} + range + signature + Bytes{1, 3}), "HD(257,3,0,0x800,0x1000)");
}

TEST(DevicePathText, UnknownAndTooShortNodesAreShownAsTheyAre) {
    EXPECT_EQ(text_of(3, 200, {1, 2}), "Path(3,200,0102)");
    EXPECT_EQ(text_of(9, 9, {}), "Path(9,9)");
    EXPECT_EQ(text_of(1, 1, {2}), "Path(1,1,02)");
    EXPECT_EQ(text_of(4, 1, Bytes(37, 0)).substr(0, 14), "Path(4,1,00000");
    EXPECT_EQ(text_of(3, 11, Bytes(32, 0)).substr(0, 10), "Path(3,11,");
}

TEST(DevicePathText, EveryKindOfNodeNeedsAllItsFields) {
    struct Kind {
        std::uint8_t type, sub_type;
        std::size_t
            least;  // bytes of the body, by UEFI 2.10, section 10.3, up to the last field that is shown
    };
    const Kind kinds[] = {{1, 1, 2},  {1, 2, 1},   {1, 3, 20},  {1, 4, 16},  {1, 5, 4},   {1, 6, 9},
                          {2, 1, 8},  {2, 2, 12},  {2, 3, 4},   {3, 1, 4},   {3, 2, 4},   {3, 5, 2},
                          {3, 6, 4},  {3, 10, 16}, {3, 11, 33}, {3, 12, 15}, {3, 13, 32}, {3, 15, 7},
                          {3, 16, 6}, {3, 17, 1},  {3, 18, 6},  {3, 19, 14}, {3, 20, 2},  {3, 23, 12},
                          {3, 25, 2}, {3, 26, 1},  {3, 29, 1},  {4, 1, 38},  {4, 2, 20},  {4, 3, 16},
                          {4, 5, 16}, {4, 6, 16},  {4, 7, 16},  {4, 9, 34},  {5, 1, 4}};
    for (const Kind& kind : kinds) {
        const auto shown = [&](std::size_t length) {
            return text_of(kind.type, kind.sub_type, Bytes(length, 1)).substr(0, 5);
        };
        EXPECT_EQ(shown(kind.least - 1), "Path(") << int{kind.type} << ' ' << int{kind.sub_type};
        EXPECT_NE(shown(kind.least), "Path(") << int{kind.type} << ' ' << int{kind.sub_type};
    }
}

TEST(DevicePathText, NodesOfAnyBytesAreShown) {
    for (unsigned type = 0; type < 256; ++type) {
        for (unsigned sub_type = 0; sub_type < 40; ++sub_type) {
            for (const std::size_t length : {0u, 1u, 2u, 7u, 15u, 33u, 64u, 600u}) {
                EXPECT_LE(text_of(static_cast<std::uint8_t>(type), static_cast<std::uint8_t>(sub_type),
                                  Bytes(length, 0xFF))
                              .size(),
                          LineText::capacity);
            }
        }
    }
}

std::size_t nodes_in(const Bytes& path) {
    DevicePathReader reader(path);
    std::size_t count = 0;
    while (reader.next())
        ++count;
    return count;
}

TEST(DevicePathReader, EndsAtTheEndNode) {
    EXPECT_EQ(nodes_in(node(1, 1, {0, 0}) + node(3, 5, {0, 0}) + end_node + node(1, 1, {0, 0})), 2u);
    EXPECT_EQ(nodes_in(end_node), 0u);
    EXPECT_EQ(nodes_in({}), 0u);
}

TEST(DevicePathReader, EndOfAnInstanceIsNotTheEnd) {
    EXPECT_EQ(nodes_in(node(1, 1, {0, 0}) + Bytes{0x7F, 0x01, 4, 0} + node(3, 5, {0, 0}) + end_node), 3u);
}

TEST(DevicePathReader, EndsAtImpossibleLengths) {
    EXPECT_EQ(nodes_in({1, 1, 0, 0}), 0u);
    EXPECT_EQ(nodes_in({1, 1, 3, 0, 0, 0}), 0u);
    EXPECT_EQ(nodes_in({1, 1, 7, 0, 0, 0}), 0u);
    EXPECT_EQ(nodes_in({1, 1, 0xFF, 0xFF, 0, 0}), 0u);
    EXPECT_EQ(nodes_in({1, 1, 4}), 0u);
    EXPECT_EQ(nodes_in({1, 1, 6, 0, 0, 0}), 1u);
}

// ---- Load options -------------------------------------------------------------------------------

Bytes load_option(std::uint8_t attributes, std::uint16_t path_length, const Bytes& rest) {
    return Bytes{attributes,
                 0,
                 0,
                 0,
                 static_cast<std::uint8_t>(path_length),
                 static_cast<std::uint8_t>(path_length >> 8)} +
           rest;
}

std::string description_of(const Bytes& bytes) {
    const auto option = decode_load_option(bytes);
    if (!option) return "(damaged)";
    LineText line;
    put_description(line, *option);
    return std::string(line.view());
}

TEST(LoadOption, PartsAreTakenApart) {
    const Bytes bytes = load_option(9, 4, utf16("debian") + end_node + Bytes{1, 2, 3});
    const auto option = decode_load_option(bytes);
    ASSERT_TRUE(option);
    EXPECT_TRUE(option->is_active());
    EXPECT_TRUE(option->is_hidden());
    EXPECT_FALSE(option->is_application());
    EXPECT_EQ(option->device_path.size(), 4u);
    EXPECT_EQ(option->device_path[0], 0x7F);
    EXPECT_EQ(description_of(bytes), "debian");
}

TEST(LoadOption, CategoryTellsApplications) {
    Bytes bytes = load_option(1, 0, utf16("UiApp"));
    bytes[1] = 1;
    EXPECT_TRUE(decode_load_option(bytes)->is_application());
    bytes[1] = 2;
    EXPECT_FALSE(decode_load_option(bytes)->is_application());
}

TEST(LoadOption, EmptyDescriptionAndPathAreAllowed) {
    EXPECT_EQ(description_of(load_option(0, 0, {0, 0})), "");
}

TEST(LoadOption, PartsBeyondTheBytesAreDamage) {
    EXPECT_EQ(description_of({}), "(damaged)");
    EXPECT_EQ(description_of({1, 0, 0, 0, 0}), "(damaged)");
    EXPECT_EQ(description_of(load_option(1, 0, {})), "(damaged)");
    EXPECT_EQ(description_of(load_option(1, 0, utf16("abc", false))), "(damaged)");
    EXPECT_EQ(description_of(load_option(1, 0, utf16("abc", false) + Bytes{0})), "(damaged)");
    EXPECT_EQ(description_of(load_option(1, 1, utf16("abc"))), "(damaged)");
    EXPECT_EQ(description_of(load_option(1, 0xFFFF, utf16("abc") + end_node)), "(damaged)");
}

}  // namespace
}  // namespace korvane
