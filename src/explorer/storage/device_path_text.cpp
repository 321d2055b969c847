#include "explorer/storage/device_path_text.h"

#include <algorithm>
#include <array>

namespace korvane {
namespace {

using Element = DevicePathElement;

constexpr std::size_t line_width = 79;
constexpr std::size_t most_data_bytes = 32;

// A number as device paths show it: "0x" and no leading zeros.
void put_0x(LineText& line, std::uint64_t value) {
    unsigned digits = 1;
    while (digits < 16 && value >> (4 * digits) != 0)
        ++digits;
    line.put("0x").put_hex(value, digits);
}

void put_data(LineText& line, std::span<const std::uint8_t> bytes) {
    const auto shown = bytes.first(std::min(bytes.size(), most_data_bytes));
    for (const std::uint8_t byte : shown)
        line.put_hex(byte, 2);
    if (shown.size() < bytes.size()) line.put("...");
}

void put_text(LineText& line, std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        if (byte == 0) break;
        line.put_utf16(byte);
    }
}

void put_utf16_text(LineText& line, std::span<const std::uint8_t> bytes) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto unit = static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8);
        if (unit == 0) break;
        line.put_utf16(unit);
    }
}

void put_dotted(LineText& line, std::span<const std::uint8_t> address) {
    for (std::size_t i = 0; i < address.size(); ++i) {
        if (i != 0) line.put('.');
        line.put_decimal(address[i]);
    }
}

// ---- The formats --------------------------------------------------------------------------------

void put_pci(LineText& line, const Element& node) {
    line.put("Pci(");
    put_0x(line, node.body[1]);
    line.put(',');
    put_0x(line, node.body[0]);
    line.put(')');
}

// GUID and data, for the vendor nodes of all three types.
void put_vendor(LineText& line, const char* name, const Element& node) {
    line.put(name).put('(');
    put_guid(line, node.field<uefi::Guid>(0));
    if (node.body.size() > sizeof(uefi::Guid)) {
        line.put(',');
        put_data(line, node.body.subspan(sizeof(uefi::Guid)));
    }
    line.put(')');
}

// The two numbers that tell a range, from `offset` on.
void put_range(LineText& line, const Element& node, std::size_t offset) {
    put_0x(line, node.field<std::uint64_t>(offset));
    line.put(',');
    put_0x(line, node.field<std::uint64_t>(offset + 8));
}

void put_memory_mapped(LineText& line, const Element& node) {
    line.put("MemoryMapped(");
    put_0x(line, node.field<std::uint32_t>(0));
    line.put(',');
    put_range(line, node, 4);
    line.put(')');
}

// A compressed EISA identifier: three letters of five bits and a product number.
void put_eisa_id(LineText& line, std::uint32_t id) {
    constexpr std::uint32_t pnp = 0x41D0;
    if ((id & 0xFFFF) == pnp)
        line.put("PNP").put_hex(id >> 16, 4);
    else
        put_0x(line, id);
}

void put_acpi(LineText& line, const Element& node) {
    constexpr std::uint32_t pci_root = 0x0A0341D0;
    constexpr std::uint32_t pcie_root = 0x0A0841D0;
    const auto id = node.field<std::uint32_t>(0);
    if (id == pci_root || id == pcie_root) {
        line.put(id == pci_root ? "PciRoot(" : "PcieRoot(");
    } else {
        line.put("Acpi(");
        put_eisa_id(line, id);
        line.put(',');
    }
    put_0x(line, node.field<std::uint32_t>(4));
    line.put(')');
}

void put_ata(LineText& line, const Element& node) {
    line.put("Ata(").put(node.body[0] == 0 ? "Primary" : "Secondary");
    line.put(node.body[1] == 0 ? ",Master," : ",Slave,");
    put_0x(line, node.field<std::uint16_t>(2));
    line.put(')');
}

void put_mac(LineText& line, const Element& node) {
    constexpr std::size_t address_field = 32;
    constexpr std::size_t ethernet_address = 6;
    const std::uint8_t interface_type = node.body[address_field];
    line.put("MAC(");
    put_data(line, node.body.first(interface_type <= 1 ? ethernet_address : address_field));
    line.put(',');
    put_0x(line, interface_type);
    line.put(')');
}

void put_ipv4(LineText& line, const Element& node) {
    line.put("IPv4(");
    put_dotted(line, node.body.subspan(4, 4));
    const auto protocol = node.field<std::uint16_t>(12);
    line.put(protocol == 6 ? ",TCP," : protocol == 17 ? ",UDP," : ",");
    line.put(node.body[14] == 0 ? "DHCP," : "Static,");
    put_dotted(line, node.body.first(4));
    line.put(')');
}

void put_ipv6(LineText& line, const Element& node) {
    line.put("IPv6(");
    for (std::size_t i = 0; i < 16; i += 2) {
        if (i != 0) line.put(':');
        line.put_hex(static_cast<unsigned>(node.body[16 + i] << 8 | node.body[17 + i]), 4);
    }
    line.put(')');
}

void put_usb_wwid(LineText& line, const Element& node) {
    line.put("UsbWwid(");
    for (const std::size_t offset : {2u, 4u, 0u}) {
        put_0x(line, node.field<std::uint16_t>(offset));
        line.put(',');
    }
    line.put('"');
    put_utf16_text(line, node.body.subspan(6));
    line.put("\")");
}

void put_iscsi(LineText& line, const Element& node) {
    line.put("iSCSI(");
    put_text(line, node.body.subspan(14));
    line.put(',');
    put_0x(line, node.field<std::uint16_t>(12));
    line.put(",0x");
    put_data(line, node.body.subspan(4, 8));
    line.put(')');
}

void put_nvme(LineText& line, const Element& node) {
    line.put("NVMe(");
    put_0x(line, node.field<std::uint32_t>(0));
    // The identifier's most significant byte is shown first.
    for (std::size_t i = 8; i-- > 0;)
        line.put(i == 7 ? ',' : '-').put_hex(node.body[4 + i], 2);
    line.put(')');
}

void put_uri(LineText& line, const Element& node) {
    line.put("Uri(");
    put_text(line, node.body);
    line.put(')');
}

void put_hard_drive(LineText& line, const Element& node) {
    constexpr std::uint8_t mbr_signature = 1;
    constexpr std::uint8_t guid_signature = 2;
    const std::uint8_t signature_type = node.body[37];
    line.put("HD(").put_decimal(node.field<std::uint32_t>(0)).put(',');
    if (signature_type == guid_signature) {
        line.put("GPT,");
        put_guid(line, node.field<uefi::Guid>(20));
    } else if (signature_type == mbr_signature) {
        line.put("MBR,");
        put_0x(line, node.field<std::uint32_t>(20));
    } else {
        line.put_decimal(signature_type).put(",0");
    }
    line.put(',');
    put_range(line, node, 4);
    line.put(')');
}

void put_file_path(LineText& line, const Element& node) {
    put_utf16_text(line, node.body);
}

void put_guid_node(LineText& line, const char* name, const Element& node) {
    line.put(name).put('(');
    put_guid(line, node.field<uefi::Guid>(0));
    line.put(')');
}

void put_ram_disk(LineText& line, const Element& node) {
    line.put("RamDisk(");
    put_range(line, node, 0);
    line.put(',').put_decimal(node.field<std::uint16_t>(32)).put(',');
    put_guid(line, node.field<uefi::Guid>(16));
    line.put(')');
}

void put_bbs(LineText& line, const Element& node) {
    constexpr std::array<const char*, 7> types = {"", "Floppy", "HD", "CDROM", "PCMCIA", "USB", "Network"};
    const auto type = node.field<std::uint16_t>(0);
    line.put("BBS(");
    if (type != 0 && type < types.size())
        line.put(types[type]);
    else
        put_0x(line, type);
    line.put(',');
    put_text(line, node.body.subspan(4));
    line.put(')');
}

// ---- The kinds of nodes -------------------------------------------------------------------------

// A node whose text is a name and up to five fields, given by their sizes in bytes; or one with a function.
struct NodeKind {
    std::uint8_t type;
    std::uint8_t sub_type;
    std::uint8_t smallest_body;  // bytes; a shorter node is shown as of unknown kind
    std::array<std::uint8_t, 5> field_sizes;
    char name[16];  // of a node shown field by field, zero-padded
    void (*put)(LineText& line, const Element& node);
};

constexpr NodeKind fields(std::uint8_t type, std::uint8_t sub_type, std::string_view name,
                          std::array<std::uint8_t, 5> sizes) {
    NodeKind kind{type, sub_type, 0, sizes, {}, nullptr};
    for (const std::uint8_t size : sizes)
        kind.smallest_body = static_cast<std::uint8_t>(kind.smallest_body + size);
    std::copy(name.begin(), name.end(), kind.name);
    return kind;
}

constexpr NodeKind special(std::uint8_t type, std::uint8_t sub_type, std::uint8_t smallest_body,
                           void (*put)(LineText&, const Element&)) {
    return {type, sub_type, smallest_body, {}, {}, put};
}

constexpr std::array node_kinds = {
    // Hardware
    special(1, 1, 2, put_pci),
    fields(1, 2, "PcCard", {1}),
    special(1, 3, 20, put_memory_mapped),
    special(1, 4, 16, [](LineText& line, const Element& node) { put_vendor(line, "VenHw", node); }),
    fields(1, 5, "Ctrl", {4}),
    fields(1, 6, "BMC", {1, 8}),
    // ACPI
    special(2, 1, 8, put_acpi),
    fields(2, 2, "AcpiEx", {4, 4, 4}),
    fields(2, 3, "AcpiAdr", {4}),
    // Messaging
    special(3, 1, 4, put_ata),
    fields(3, 2, "Scsi", {2, 2}),
    fields(3, 5, "USB", {1, 1}),
    fields(3, 6, "I2O", {4}),
    special(3, 10, 16, [](LineText& line, const Element& node) { put_vendor(line, "VenMsg", node); }),
    special(3, 11, 33, put_mac),
    special(3, 12, 15, put_ipv4),
    special(3, 13, 32, put_ipv6),
    fields(3, 15, "UsbClass", {2, 2, 1, 1, 1}),
    special(3, 16, 6, put_usb_wwid),
    fields(3, 17, "Unit", {1}),
    fields(3, 18, "Sata", {2, 2, 2}),
    special(3, 19, 14, put_iscsi),
    fields(3, 20, "Vlan", {2}),
    special(3, 23, 12, put_nvme),
    special(3, 24, 0, put_uri),
    fields(3, 25, "UFS", {1, 1}),
    fields(3, 26, "SD", {1}),
    fields(3, 29, "eMMC", {1}),
    // Media
    special(4, 1, 38, put_hard_drive),
    fields(4, 2, "CDROM", {4, 8, 8}),
    special(4, 3, 16, [](LineText& line, const Element& node) { put_vendor(line, "VenMedia", node); }),
    special(4, 4, 0, put_file_path),
    special(4, 5, 16, [](LineText& line, const Element& node) { put_guid_node(line, "Media", node); }),
    special(4, 6, 16, [](LineText& line, const Element& node) { put_guid_node(line, "FvFile", node); }),
    special(4, 7, 16, [](LineText& line, const Element& node) { put_guid_node(line, "Fv", node); }),
    special(4, 9, 34, put_ram_disk),
    // BIOS boot specification
    special(5, 1, 4, put_bbs),
};

void put_fields(LineText& line, const NodeKind& kind, const Element& node) {
    line.put(kind.name).put('(');
    std::size_t offset = 0;
    for (const std::uint8_t size : kind.field_sizes) {
        if (size == 0) break;
        if (offset != 0) line.put(',');
        std::uint64_t value = 0;
        for (std::size_t i = size; i-- > 0;)
            value = value << 8 | node.body[offset + i];
        put_0x(line, value);
        offset += size;
    }
    line.put(')');
}

void put_unknown(LineText& line, const Element& node) {
    line.put("Path(").put_decimal(node.type).put(',').put_decimal(node.sub_type);
    if (!node.body.empty()) {
        line.put(',');
        put_data(line, node.body);
    }
    line.put(')');
}

}  // namespace

LineText device_path_node_text(const DevicePathElement& node) {
    LineText line;
    for (const NodeKind& kind : node_kinds) {
        if (kind.type != node.type || kind.sub_type != node.sub_type) continue;
        if (node.body.size() < kind.smallest_body) break;
        if (kind.put != nullptr)
            kind.put(line, node);
        else
            put_fields(line, kind, node);
        return line;
    }
    put_unknown(line, node);
    return line;
}

void list_device_path(PagedReport& listing, std::span<const std::uint8_t> path, std::size_t indent) {
    DevicePathReader reader(path);
    LineText line;
    line.tab_to(indent);
    char separator = 0;  // before the next node; none at the start of the path and of an instance
    while (const auto node = reader.next()) {
        if (node->ends_instance()) {
            line.put(',');
            separator = 0;
            continue;
        }
        const LineText text = device_path_node_text(*node);
        if (separator != 0) line.put(separator);
        if (line.length() > indent && line.length() + text.length() > line_width) {
            if (!listing.line(line)) return;
            line = LineText();
            line.tab_to(indent);
        }
        line.put(text.view());
        separator = '/';
    }
    if (line.length() > indent) listing.line(line);
}

void list_device_path(PagedReport& listing, uefi::Handle handle, std::size_t indent) {
    list_device_path(listing, device_path_of(handle), indent);
}

void put_guid(LineText& line, const uefi::Guid& guid) {
    line.put_hex(guid.Data1, 8).put('-').put_hex(guid.Data2, 4).put('-').put_hex(guid.Data3, 4).put('-');
    for (std::size_t i = 0; i < guid.Data4.size(); ++i) {
        if (i == 2) line.put('-');
        line.put_hex(guid.Data4[i], 2);
    }
}

}  // namespace korvane
