#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "explorer/storage/block_device.h"
#include "explorer_session.h"
#include "random_bits.h"

namespace korvane {
namespace {

using test::ExplorerSession;
using test::Lines;
using test::TemporaryFolder;

// ---- Disk images --------------------------------------------------------------------------------

// The bytes of a small disk, put together by the tests.
class DiskImage {
  public:
    explicit DiskImage(std::size_t bytes, std::size_t block_size = 512)
        : bytes_(bytes, 0), block_(block_size) {}

    std::string& bytes() { return bytes_; }

    template <typename Number>
    DiskImage& put(std::size_t offset, Number value) {
        std::memcpy(bytes_.data() + offset, &value, sizeof value);
        return *this;
    }

    DiskImage& sign_mbr() { return put(510, std::uint16_t{0xAA55}); }

    DiskImage& mbr_entry(unsigned index, std::uint8_t type, std::uint32_t first, std::uint32_t count) {
        const std::size_t record = 446 + 16 * index;
        return put(record + 4, type).put(record + 8, first).put(record + 12, count);
    }

    DiskImage& gpt_header(std::uint64_t lba, std::uint32_t entries, std::uint32_t entry_size) {
        std::memcpy(bytes_.data() + block_, "EFI PART", 8);
        return put(block_ + 72, lba).put(block_ + 80, entries).put(block_ + 84, entry_size);
    }

    // An entry at a byte offset, of a type that has no name.
    DiskImage& gpt_entry(std::size_t offset, std::uint64_t first, std::uint64_t last,
                         std::u16string_view name) {
        put(offset, std::uint32_t{0x11111111}).put(offset + 32, first).put(offset + 40, last);
        std::memcpy(bytes_.data() + offset + 56, name.data(), name.size() * 2);
        return *this;
    }

  private:
    std::string bytes_;
    std::size_t block_;
};

host::BlockDeviceConfig device(const std::filesystem::path& image, std::uint32_t block_size = 512) {
    host::BlockDeviceConfig config;
    config.image = image;
    config.block_size = block_size;
    return config;
}

host::Config machine_with(std::vector<host::BlockDeviceConfig> devices) {
    host::Config config;
    config.block_devices = std::move(devices);
    return config;
}

// What `PARTITIONS 0` says of a disk of these bytes.
Lines partitions_of(DiskImage& image, std::uint32_t block_size = 512,
                    std::string_view command = "PARTITIONS 0") {
    const TemporaryFolder folder;
    ExplorerSession session(machine_with({device(folder.write("disk", image.bytes()), block_size)}));
    return session.run(command);
}

// ---- Reading by bytes ----------------------------------------------------------------------------

// A device of blocks that hold their number, of which one cannot be read: the transfer breaks off when it has
// begun.
struct BreakingDevice {
    static constexpr std::uint32_t block_size = 16;

    uefi::BlockIoProtocol protocol{};  // first, so that `self` leads here
    uefi::Lba broken = 2;
    int reads = 0;

    BreakingDevice() { protocol.ReadBlocks = read; }

    static uefi::Status EFIAPI read(uefi::BlockIoProtocol* self, std::uint32_t, uefi::Lba lba,
                                    std::uint64_t size, void* buffer) {
        BreakingDevice& that = *reinterpret_cast<BreakingDevice*>(self);
        ++that.reads;
        const bool breaks = lba == that.broken;
        std::memset(buffer, breaks ? 0xEE : static_cast<int>(lba + 1), breaks ? size / 2 : size);
        return breaks ? uefi::device_error : uefi::success;
    }
};

TEST(DiskReader, KeepsTheLastBlockThatWasReadWhole) {
    const ExplorerSession session;
    BreakingDevice device;
    Disk disk{nullptr, &device.protocol, {}};
    disk.media.BlockSize = BreakingDevice::block_size;
    disk.media.LastBlock = 3;
    DiskReader reader(disk);
    std::array<std::uint8_t, 4> bytes{};
    const auto all = [&](int value) {
        return std::all_of(bytes.begin(), bytes.end(), [&](std::uint8_t byte) { return byte == value; });
    };
    EXPECT_TRUE(reader.read(16, bytes));
    EXPECT_TRUE(all(2));
    EXPECT_TRUE(reader.read(28, bytes));
    EXPECT_TRUE(all(2));
    EXPECT_EQ(device.reads, 1);
    // What a failed transfer has left in the buffer is no block's content.
    EXPECT_FALSE(reader.read(32, bytes));
    EXPECT_TRUE(reader.read(16, bytes));
    EXPECT_TRUE(all(2));
    EXPECT_FALSE(reader.read(32, bytes));
    EXPECT_FALSE(reader.read(32, bytes));
    // Over the border of two blocks, up to the last byte and not beyond.
    EXPECT_TRUE(reader.read(14, bytes));
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{1, 1, 2, 2}));
    EXPECT_TRUE(reader.read(60, bytes));
    EXPECT_TRUE(all(4));
    EXPECT_FALSE(reader.read(61, bytes));
    EXPECT_FALSE(reader.read(30, bytes));
    EXPECT_FALSE(reader.read(~std::uint64_t{0} - 1, bytes));
    // Nor does a disk of 2^64 bytes go on at its beginning.
    disk.media.LastBlock = ~std::uint64_t{0} / BreakingDevice::block_size;
    EXPECT_TRUE(reader.read(~std::uint64_t{0} - 3, bytes));
    EXPECT_FALSE(reader.read(~std::uint64_t{0} - 2, bytes));
}

// ---- DISKS and DISK -----------------------------------------------------------------------------

TEST(ExplorerDisks, WholePresentMediaAreNumberedInTheFirmwaresOrder) {
    const TemporaryFolder folder;
    const auto small = folder.write("small", std::string(64 * 512, 0));
    const auto large = folder.write("large", std::string(3 * 1024 * 1024, 0));
    auto partition = device(small);
    partition.logical_partition = true;
    auto empty_drive = device(small);
    empty_drive.media_present = false;
    auto stick = device(small, 4096);
    stick.removable = true;
    stick.read_only = true;
    stick.last_block = 0xFFFFFFFF;
    ExplorerSession session(machine_with({partition, device(large), empty_drive, stick}));
    EXPECT_EQ(session.run("DISKS"),
              (Lines{"Disk 0          3 MiB  block=512    last LBA=6143        fixed      read/write",
                     "Disk 1   16777216 MiB  block=4096   last LBA=4294967295  removable  read-only"}));
    EXPECT_EQ(session.run("DISK 1"),
              (Lines{"Disk 1  16777216 MiB", "  block=4096  last LBA=4294967295  bytes=17592186044416",
                     "  removable  read-only  media id=1  I/O alignment=0"}));
    EXPECT_EQ(session.run("DISK D:0").at(0), "Disk 0  3 MiB");
    EXPECT_EQ(session.run("DISK 2"), Lines{"Disk not found."});
    EXPECT_EQ(session.run("DISK FFFFFFFFFFFFFFFF"), Lines{"Disk not found."});
}

TEST(ExplorerDisks, WithoutDisksThereIsAMessage) {
    ExplorerSession session;
    EXPECT_EQ(session.run("DISKS"), Lines{"No whole-media Block I/O devices found."});
    EXPECT_EQ(session.run("DISK 0"), Lines{"Disk not found."});
    EXPECT_EQ(session.run("SECTOR 0 0"), Lines{"Disk not found."});
    EXPECT_EQ(session.run("PARTITIONS 0"), Lines{"Disk not found."});
    EXPECT_EQ(session.run("PARTITION 0 1"), Lines{"Disk not found."});
}

TEST(ExplorerDisks, FailuresOfTheFirmwareMeanNoDisks) {
    const TemporaryFolder folder;
    ExplorerSession session(machine_with({device(folder.write("disk", std::string(1024, 0)))}));
    session.machine().faults().arm({{host::Service::LocateHandleBuffer, 1, 1}});
    EXPECT_EQ(session.run("DISKS"), Lines{"No whole-media Block I/O devices found."});
    session.machine().faults().arm({{host::Service::HandleProtocol, 1, 1}});
    EXPECT_EQ(session.run("DISKS"), Lines{"No whole-media Block I/O devices found."});
}

TEST(ExplorerDisks, BadArgumentsPrintTheUsage) {
    ExplorerSession session;
    for (const char* line : {"DISK", "DISK X", "DISK D:"})
        EXPECT_EQ(session.run(line), Lines{"Usage: DISK n"});
    for (const char* line : {"SECTOR", "SECTOR 0", "SECTOR X 0", "SECTOR 0 X"})
        EXPECT_EQ(session.run(line), Lines{"Usage: SECTOR disk lba [count]"}) << line;
    EXPECT_EQ(session.run("SECTOR 0 0 X"), Lines{"Bad count."});
    for (const char* line : {"PARTITIONS", "PARTITIONS X"})
        EXPECT_EQ(session.run(line), Lines{"Usage: PARTITIONS disk"}) << line;
    for (const char* line : {"PARTITION", "PARTITION 0", "PARTITION 0 X", "PARTITION X 0"})
        EXPECT_EQ(session.run(line), Lines{"Usage: PARTITION disk partition"}) << line;
}

TEST(ExplorerDisks, SizesThatDoNotFitAreUnknown) {
    const TemporaryFolder folder;
    const auto image = folder.write("disk", std::string(1024, 0));
    auto endless = device(image);
    endless.last_block = 0xFFFFFFFFFFFFFFFF;
    auto too_large = device(image);
    too_large.last_block = (std::uint64_t{1} << 55) - 1;
    auto just_fits = device(image);
    just_fits.last_block = (std::uint64_t{1} << 55) - 2;
    ExplorerSession session(machine_with({endless, too_large, just_fits}));
    EXPECT_EQ(session.run("DISK 0"),
              (Lines{"Disk 0  size unknown", "  block=512  last LBA=18446744073709551615  bytes=unknown",
                     "  fixed  read/write  media id=1  I/O alignment=0"}));
    EXPECT_EQ(session.run("DISK 1").at(0), "Disk 1  size unknown");
    EXPECT_EQ(session.run("DISK 2").at(0), "Disk 2  17592186044415 MiB");
    for (const std::string& line : session.run("DISKS"))
        EXPECT_LE(line.size(), 128u);
}

// ---- SECTOR -------------------------------------------------------------------------------------

TEST(ExplorerSector, DumpsOneBlockUnlessToldOtherwise) {
    const TemporaryFolder folder;
    std::string bytes(1024 * 1024, 0);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i / 16 + i % 16);
    ExplorerSession session(machine_with({device(folder.write("disk", bytes))}));
    const Lines lines = session.run("SECTOR 0 2");
    ASSERT_EQ(lines.size(), 32u);
    EXPECT_EQ(lines[0],
              "0000000000000400  40 41 42 43 44 45 46 47  48 49 4A 4B 4C 4D 4E 4F  @ABCDEFGHIJKLMNO");
    EXPECT_EQ(lines[31].substr(0, 20), "00000000000005F0  5F");
    EXPECT_EQ(session.run("SECTOR 0 2 0"), lines);
    EXPECT_EQ(session.run("SECTOR 0 2 1"), lines);
    EXPECT_EQ(session.run("SECTOR 0 D:2 D:1"), lines);
    EXPECT_EQ(session.run("SECTOR 0 2 3").size(), 96u);
}

TEST(ExplorerSector, ReadsAtMost64Blocks) {
    const TemporaryFolder folder;
    ExplorerSession session(machine_with({device(folder.write("disk", std::string(128 * 512, 0)))}), 25);
    session.run("SECTOR 0 0 40");
    EXPECT_EQ(session.row_text(23).substr(0, 16), "0000000000007FF0");
    session.run("SECTOR 0 1 D:256");
    EXPECT_EQ(session.row_text(23).substr(0, 16), "00000000000081F0");
    session.press_later({uefi::scan_escape, 0});
    const int before = session.waits;
    session.run("SECTOR 0 0 2");  // 64 lines
    EXPECT_EQ(session.waits, before + 3) << "Escape does not end a dump, and nothing follows the last line";
}

TEST(ExplorerSector, LimitIsAnnouncedFirst) {
    const TemporaryFolder folder;
    ExplorerSession session(machine_with({device(folder.write("disk", std::string(1024, 0)))}));
    EXPECT_EQ(session.run("SECTOR 0 0 40"), Lines{"LBA outside media."});
    EXPECT_EQ(session.run("SECTOR 0 0 41"),
              (Lines{"Sector read limited to 64 blocks.", "LBA outside media."}));
    EXPECT_EQ(session.run("SECTOR 5 0 41"), (Lines{"Sector read limited to 64 blocks.", "Disk not found."}));
}

TEST(ExplorerSector, BlocksMustLieOnTheMedia) {
    const TemporaryFolder folder;
    ExplorerSession session(machine_with({device(folder.write("disk", std::string(4 * 512, 0)))}));
    EXPECT_EQ(session.run("SECTOR 0 3").size(), 32u);
    EXPECT_EQ(session.run("SECTOR 0 2 2").size(), 64u);
    EXPECT_EQ(session.run("SECTOR 0 4"), Lines{"LBA outside media."});
    EXPECT_EQ(session.run("SECTOR 0 3 2"), Lines{"LBA outside media."});
    EXPECT_EQ(session.run("SECTOR 0 FFFFFFFFFFFFFFFF"), Lines{"LBA outside media."});
    EXPECT_EQ(session.run("SECTOR 0 FFFFFFFFFFFFFFFF 40"), Lines{"LBA outside media."});
}

TEST(ExplorerSector, ImpossibleGeometriesAreRefused) {
    const TemporaryFolder folder;
    const auto image = folder.write("disk", std::string(1024, 0));
    auto no_blocks = device(image, 0);
    no_blocks.last_block = 0xFFFFFFFFFFFFFFFF;
    auto overflowing = device(image);
    overflowing.last_block = 0xFFFFFFFFFFFFFFFF;
    auto huge_blocks = device(image, 0x80000000);
    ExplorerSession session(machine_with({no_blocks, overflowing, huge_blocks}));
    EXPECT_EQ(session.run("SECTOR 0 0"), Lines{"LBA outside media."});
    EXPECT_EQ(session.run("SECTOR 1 80000000000000"), Lines{"Byte offset overflow."});
    EXPECT_EQ(session.run("SECTOR 1 FFFFFFFFFFFFFFFF"), Lines{"Byte offset overflow."});
    EXPECT_EQ(session.run("SECTOR 1 FFFFFFFFFFFFFFFF 2"), Lines{"LBA outside media."});
    EXPECT_EQ(session.run("SECTOR 1 1FFFFFFFFFFFFF").at(0).substr(0, 20), "3FFFFFFFFFFFFE00  00");
    EXPECT_EQ(session.run("SECTOR 1 7FFFFFFFFFFFFF"), Lines{"Block read failed."}) << "not an overflow";
    EXPECT_EQ(session.run("SECTOR 2 0"), Lines{"Read too large."});
}

TEST(ExplorerSector, OneTransferIsAtMostOneMiB) {
    const TemporaryFolder folder;
    const auto image = folder.write("disk", std::string(17 * 65536, 0));
    // On a screen of one row, which does not scroll, each line replaces the one before.
    ExplorerSession session(machine_with({device(image, 65536)}), 1);
    session.run("SECTOR 0 0 10");
    EXPECT_EQ(session.row_text(0).substr(0, 16), "00000000000FFFF0");
    session.run("SECTOR 0 0 11");
    EXPECT_EQ(session.row_text(0), "Read too large.");
}

TEST(ExplorerSector, AlignmentIsHonoured) {
    const TemporaryFolder folder;
    const auto image = folder.write("disk", std::string(256 * 1024, 0));
    for (const std::uint32_t alignment : {2u, 16u, 512u, 4096u, 65536u, 3u, 1000u}) {
        auto picky = device(image, 4096);
        picky.io_align = alignment;
        // A transfer to a misaligned buffer is misuse, which the session reports.
        ExplorerSession session(machine_with({picky}));
        EXPECT_EQ(session.run("SECTOR 0 0").size(), 127u) << "the bottom of 256 lines";
        EXPECT_EQ(session.run("PARTITIONS 0").back(), "(no partitions)");
    }
}

TEST(ExplorerSector, FailuresAreReported) {
    const TemporaryFolder folder;
    auto flaky = device(folder.write("disk", std::string(8 * 512, 0)));
    flaky.unreadable_blocks = {3};
    flaky.io_align = 0x80000000;
    auto bad = flaky;
    bad.io_align = 0;
    ExplorerSession session(machine_with({flaky, bad}));
    EXPECT_EQ(session.run("SECTOR 0 0"), Lines{"Out of memory."});
    EXPECT_EQ(session.run("SECTOR 1 0 4"), Lines{"Block read failed."});
    EXPECT_EQ(session.run("SECTOR 1 0 3").size(), 96u);
    session.machine().faults().arm({{host::Service::AllocatePool, 1, 1, uefi::out_of_resources}});
    EXPECT_EQ(session.run("SECTOR 1 0"), Lines{"Out of memory."});
    session.machine().faults().arm({{host::Service::ReadBlocks, 1, 1, uefi::media_changed}});
    EXPECT_EQ(session.run("SECTOR 1 0"), Lines{"Block read failed."});
}

// ---- GPT ----------------------------------------------------------------------------------------

TEST(ExplorerPartitions, GptEntriesAreNumberedByTheirPlace) {
    DiskImage image(64 * 512);
    image.gpt_header(2, 128, 128)
        .gpt_entry(1024, 34, 100, u"first")
        .gpt_entry(1024 + 2 * 128, 2048, 4095, u"third")
        .gpt_entry(1024 + 127 * 128, 5000, 4999, u"last");
    EXPECT_EQ(partitions_of(image),
              (Lines{"Disk 0  GPT", "  1  GPT  \"first\"  LBA 34-100  0 MiB",
                     "  3  GPT  \"third\"  LBA 2048-4095  1 MiB", "  128  GPT  \"last\"  LBA 5000-4999"}));
    EXPECT_EQ(partitions_of(image, 512, "PARTITION 0 3"),
              (Lines{"Disk 0  GPT", "  3  GPT  \"third\"  LBA 2048-4095  1 MiB"}));
    EXPECT_EQ(partitions_of(image, 512, "PARTITION 0 D:128").size(), 2u);
    for (const char* missing : {"PARTITION 0 0", "PARTITION 0 2", "PARTITION 0 81"}) {
        EXPECT_EQ(partitions_of(image, 512, missing), (Lines{"Disk 0  GPT", "Partition not found."}))
            << missing;
    }
}

TEST(ExplorerPartitions, LargeBlocksMoveTheHeaderAndTheTable) {
    for (const std::uint32_t block_size : {2048u, 4096u, 65536u}) {
        DiskImage image(std::size_t{block_size} * 4, block_size);
        image.gpt_header(2, 4, 256).gpt_entry(std::size_t{block_size} * 2 + 256, 256, 511, u"x");
        const std::string size = std::to_string(block_size * 256 >> 20);
        EXPECT_EQ(partitions_of(image, block_size),
                  (Lines{"Disk 0  GPT", "  2  GPT  \"x\"  LBA 256-511  " + size + " MiB"}));
    }
}

TEST(ExplorerPartitions, EntriesMayStraddleBlocks) {
    DiskImage image(16 * 512);
    image.gpt_header(2, 8, 200).gpt_entry(1024 + 2 * 200, 1, 2, u"straddles");
    EXPECT_EQ(partitions_of(image), (Lines{"Disk 0  GPT", "  3  GPT  \"straddles\"  LBA 1-2  0 MiB"}));
}

TEST(ExplorerPartitions, UnreasonableTablesAreRefused) {
    const Lines refused{"Disk 0  GPT", "GPT entry table parameters are unreasonable."};
    const std::pair<std::uint32_t, std::uint32_t> tables[] = {
        {128, 64}, {128, 127}, {128, 4097}, {4097, 128}, {0xFFFFFFFF, 128}, {1, 0xFFFFFFFF}, {128, 0}};
    for (const auto& [entries, size] : tables) {
        DiskImage image(64 * 512);
        image.gpt_header(2, entries, size);
        EXPECT_EQ(partitions_of(image), refused) << entries << " entries of " << size;
        EXPECT_EQ(partitions_of(image, 512, "PARTITION 0 1"), refused);
    }
}

TEST(ExplorerPartitions, EmptyTablesSaySo) {
    DiskImage image(64 * 512);
    image.gpt_header(2, 0, 128);
    EXPECT_EQ(partitions_of(image), (Lines{"Disk 0  GPT", "(no partitions)"}));
    image.gpt_header(2, 128, 128);
    EXPECT_EQ(partitions_of(image), (Lines{"Disk 0  GPT", "(no partitions)"}));
}

TEST(ExplorerPartitions, WalkEndsWhereTheTableLeavesTheDisk) {
    DiskImage image(4 * 512);
    image.gpt_header(3, 128, 128).gpt_entry(3 * 512, 1, 2, u"a").gpt_entry(3 * 512 + 384, 1, 2, u"d");
    EXPECT_EQ(partitions_of(image),
              (Lines{"Disk 0  GPT", "  1  GPT  \"a\"  LBA 1-2  0 MiB", "  4  GPT  \"d\"  LBA 1-2  0 MiB"}));
}

TEST(ExplorerPartitions, TablesInImpossiblePlacesAreEmpty) {
    // Beyond the disk, at a place whose byte offset wraps to the header itself,
    // and at the very top of the offsets.
    for (const std::uint64_t lba :
         {std::uint64_t{1000}, std::uint64_t{0xFFFFFFFFFFFFFFFF}, std::uint64_t{1} << 55,
          (std::uint64_t{1} << 55) + 1, (std::uint64_t{1} << 55) - 1}) {
        DiskImage image(8 * 512);
        image.gpt_header(lba, 4096, 4096);
        EXPECT_EQ(partitions_of(image), (Lines{"Disk 0  GPT", "(no partitions)"})) << lba;
    }
}

TEST(ExplorerPartitions, HeaderMayBeItsOwnTable) {
    DiskImage image(8 * 512);
    image.gpt_header(1, 1, 128);
    const Lines lines = partitions_of(image);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1].substr(0, 10), "  1  GPT  ");
}

TEST(ExplorerPartitions, OffsetsThatWrapBehindTheTopEndTheWalk) {
    const TemporaryFolder folder;
    DiskImage image(4 * 512);
    image.gpt_header((std::uint64_t{1} << 55) - 1, 128, 4096);
    auto endless = device(folder.write("disk", image.bytes()));
    endless.last_block = 0xFFFFFFFFFFFFFFFF;
    ExplorerSession session(machine_with({endless}));
    EXPECT_EQ(session.run("PARTITIONS 0"), (Lines{"Disk 0  GPT", "(no partitions)"}));
}

TEST(ExplorerPartitions, FailuresEndTheReport) {
    const TemporaryFolder folder;
    DiskImage image(64 * 512);
    image.sign_mbr().mbr_entry(0, 0xEE, 1, 63).gpt_header(2, 128, 128);
    image.gpt_entry(1024, 40, 50, u"first").gpt_entry(1024 + 512, 51, 60, u"fifth");
    const auto path = folder.write("disk", image.bytes());
    const auto unreadable = [&](std::uint64_t block) {
        auto config = device(path);
        config.unreadable_blocks = {block};
        return config;
    };
    ExplorerSession session(machine_with({unreadable(0), unreadable(1), unreadable(3), device(path)}));
    EXPECT_EQ(session.run("PARTITIONS 0"), Lines{"Cannot read partition table."});
    EXPECT_EQ(session.run("PARTITIONS 1"), (Lines{"Disk 1  MBR", "  1  MBR type EE  LBA 1-63  0 MiB"}))
        << "without a readable header the disk is read as MBR";
    EXPECT_EQ(session.run("PARTITIONS 2"), (Lines{"Disk 2  GPT", "  1  GPT  \"first\"  LBA 40-50  0 MiB"}));
    // Allocations: the reader's block, then the entry.
    session.machine().faults().arm({{host::Service::AllocatePool, 1, 1, uefi::out_of_resources}});
    EXPECT_EQ(session.run("PARTITIONS 3"), Lines{"Cannot read partition table."});
    session.machine().faults().arm({{host::Service::AllocatePool, 2, 1, uefi::out_of_resources}});
    EXPECT_EQ(session.run("PARTITIONS 3"), (Lines{"Disk 3  GPT", "Out of memory."}));
    session.machine().faults().arm({{host::Service::ReadBlocks, 1, 100, uefi::no_media}});
    EXPECT_EQ(session.run("PARTITIONS 3"), Lines{"Cannot read partition table."});
}

TEST(ExplorerPartitions, BlocksBelow512BytesAreUnsupported) {
    DiskImage image(2048);
    EXPECT_EQ(partitions_of(image, 256), Lines{"Unsupported block size."});
    EXPECT_EQ(partitions_of(image, 0), Lines{"Unsupported block size."});
    EXPECT_EQ(partitions_of(image, 511), Lines{"Unsupported block size."});
}

// ---- MBR ----------------------------------------------------------------------------------------

TEST(ExplorerPartitions, MbrEntriesAreNumberedByTheirPlace) {
    DiskImage image(8 * 512);
    image.sign_mbr().mbr_entry(0, 0x0C, 2048, 204800).mbr_entry(2, 0, 5, 5).mbr_entry(3, 0x83, 206848, 1);
    EXPECT_EQ(partitions_of(image), (Lines{"Disk 0  MBR", "  1  MBR type 0C  LBA 2048-206847  100 MiB",
                                           "  4  MBR type 83  LBA 206848-206848  0 MiB"}));
    EXPECT_EQ(partitions_of(image, 512, "PARTITION 0 4"),
              (Lines{"Disk 0  MBR", "  4  MBR type 83  LBA 206848-206848  0 MiB"}));
    EXPECT_EQ(partitions_of(image, 512, "PARTITION 0 3"), (Lines{"Disk 0  MBR", "Partition not found."}));
    EXPECT_EQ(partitions_of(image, 512, "PARTITION 0 5"), (Lines{"Disk 0  MBR", "Partition not found."}));
}

TEST(ExplorerPartitions, WrongSignatureStillListsTheEntries) {
    DiskImage image(8 * 512);
    image.mbr_entry(1, 0x83, 1, 4096);
    EXPECT_EQ(partitions_of(image),
              (Lines{"Disk 0  MBR", "  no valid MBR signature", "  2  MBR type 83  LBA 1-4096  2 MiB"}));
    DiskImage empty(8 * 512);
    EXPECT_EQ(partitions_of(empty), (Lines{"Disk 0  MBR", "  no valid MBR signature", "(no partitions)"}));
}

TEST(ExplorerPartitions, ExtendedPartitionsAreNotFollowed) {
    DiskImage image(8 * 512);
    image.sign_mbr().mbr_entry(0, 0x05, 1, 7);
    image.put(512 + 446 + 4, std::uint8_t{0x83})
        .put(512 + 446 + 12, std::uint32_t{1})
        .put(512 + 510, std::uint16_t{0xAA55});
    EXPECT_EQ(partitions_of(image), (Lines{"Disk 0  MBR", "  1  MBR type 05  LBA 1-7  0 MiB"}));
}

TEST(ExplorerPartitions, DiskOfOneBlockIsReadAsMbr) {
    DiskImage image(512);
    image.sign_mbr();
    EXPECT_EQ(partitions_of(image), (Lines{"Disk 0  MBR", "(no partitions)"}));
}

// ---- Hostile disks ------------------------------------------------------------------------------

TEST(ExplorerPartitions, TablesOfAnyBytesDoNoHarm) {
    test::RandomBits random(2463534242);
    const auto draw = [&random] { return random.bits() >> 32; };
    const TemporaryFolder folder;
    for (int round = 0; round < 60; ++round) {
        DiskImage image(16 * 512);
        for (char& byte : image.bytes())
            byte = static_cast<char>(draw());
        if (round % 3 != 0) {
            constexpr std::uint32_t extremes[] = {0, 1, 127, 128, 4095, 4096, 4097, 0x7FFFFFFF, 0xFFFFFFFF};
            image.gpt_header(draw() % 2 ? draw() % 16 : ~std::uint64_t{0} / (draw() % 4 + 1),
                             extremes[draw() % 9], extremes[draw() % 9]);
        }
        auto config = device(folder.write("disk", image.bytes()));
        if (draw() % 4 == 0) config.last_block = 0xFFFFFFFFFFFFFFFF;
        if (draw() % 4 == 0) config.unreadable_blocks = {draw() % 16};
        ExplorerSession session(machine_with({config}), 1);
        session.run("PARTITIONS 0");
        session.run("PARTITION 0 1");
        session.run("DISK 0");
        session.run("SECTOR 0 0 2");
    }
}

TEST(ExplorerPartitions, EveryAllocationAndEveryReadMayFail) {
    const TemporaryFolder folder;
    DiskImage image(64 * 512);
    image.gpt_header(2, 128, 128).gpt_entry(1024, 40, 50, u"first");
    const auto path = folder.write("disk", image.bytes());
    for (const host::Service service : {host::Service::AllocatePool, host::Service::ReadBlocks,
                                        host::Service::HandleProtocol, host::Service::LocateHandleBuffer}) {
        for (std::uint64_t n = 1;; ++n) {
            ExplorerSession session(machine_with({device(path)}));
            session.machine().faults().arm({{service, n, 1, uefi::out_of_resources}});
            session.run("PARTITIONS 0");
            session.run("SECTOR 0 0");
            session.run("DISKS");
            session.run("DISK 0");
            ASSERT_LT(n, 200u);
            if (session.machine().faults().strikes() == 0) break;
        }
    }
}

}  // namespace
}  // namespace korvane
