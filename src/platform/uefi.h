#pragma once

// The UEFI ABI: the records, calling convention, status codes and identifiers of the firmware interface, as
// far as the interpreter (and the hosted firmware of the development tools) use them.
//
// The names of fields and services are those of the UEFI standard (release 2.10), so that its text can be
// read beside the code. Services that nothing here uses are declared `Unused`: they only hold their place in
// the table.

#include <array>
#include <cstddef>
#include <cstdint>

// The calling convention of every firmware entry point on x86-64 (UEFI 2.10, section 2.3.4).
#ifdef __wasm__  // has one convention only
#define EFIAPI
#else
#define EFIAPI __attribute__((ms_abi))
#endif

namespace korvane::uefi {

// ---------------------------------------------------------------------------------------------------------------
// Basic types (section 2.3.1)

using Status = std::uint64_t;
using Handle = void*;
using Event = void*;
using PhysicalAddress = std::uint64_t;
// A block number on a Block I/O device.
using Lba = std::uint64_t;
// The place of a service that is not used.
using Unused = void*;

// A 128-bit identifier, in its mixed-endian in-memory form.
struct Guid {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::array<std::uint8_t, 8> Data4;

    friend constexpr bool operator==(const Guid&, const Guid&) = default;
};
static_assert(sizeof(Guid) == 16);

// ---------------------------------------------------------------------------------------------------------------
// Status codes (appendix D)

// Set in every status that is an error; warnings and success leave it clear.
inline constexpr Status error_bit = 0x8000000000000000;

inline constexpr Status success = 0;
inline constexpr Status load_error = error_bit | 1;
inline constexpr Status invalid_parameter = error_bit | 2;
inline constexpr Status unsupported = error_bit | 3;
inline constexpr Status bad_buffer_size = error_bit | 4;
inline constexpr Status buffer_too_small = error_bit | 5;
inline constexpr Status not_ready = error_bit | 6;
inline constexpr Status device_error = error_bit | 7;
inline constexpr Status write_protected = error_bit | 8;
inline constexpr Status out_of_resources = error_bit | 9;
inline constexpr Status volume_corrupted = error_bit | 10;
inline constexpr Status volume_full = error_bit | 11;
inline constexpr Status no_media = error_bit | 12;
inline constexpr Status media_changed = error_bit | 13;
inline constexpr Status not_found = error_bit | 14;
inline constexpr Status access_denied = error_bit | 15;
inline constexpr Status no_mapping = error_bit | 17;
inline constexpr Status timeout = error_bit | 18;
inline constexpr Status aborted = error_bit | 21;
inline constexpr Status security_violation = error_bit | 26;
// A warning, not an error: `File::Delete` closed the handle but could not remove the file.
inline constexpr Status warn_delete_failure = 2;

// True when `status` is an error; a warning is not.
constexpr bool is_error(Status status) {
    return (status & error_bit) != 0;
}

// ---------------------------------------------------------------------------------------------------------------
// Memory (section 7.2)

inline constexpr std::uint64_t page_size = 4096;

enum class AllocateType : std::uint32_t {
    AllocateAnyPages = 0,
    AllocateMaxAddress = 1,
    AllocateAddress = 2,
};

enum class MemoryType : std::uint32_t {
    EfiReservedMemoryType = 0,
    EfiLoaderCode = 1,
    EfiLoaderData = 2,
    EfiBootServicesCode = 3,
    EfiBootServicesData = 4,
    EfiRuntimeServicesCode = 5,
    EfiRuntimeServicesData = 6,
    EfiConventionalMemory = 7,
    EfiUnusableMemory = 8,
    EfiACPIReclaimMemory = 9,
    EfiACPIMemoryNVS = 10,
    EfiMemoryMappedIO = 11,
    EfiMemoryMappedIOPortSpace = 12,
    EfiPalCode = 13,
    EfiPersistentMemory = 14,
};

// One region of the memory map. Firmware may use larger records: step by the descriptor size it reports.
struct MemoryDescriptor {
    MemoryType Type;
    PhysicalAddress PhysicalStart;
    std::uint64_t VirtualStart;
    std::uint64_t NumberOfPages;
    std::uint64_t Attribute;
};
static_assert(sizeof(MemoryDescriptor) == 40);
static_assert(offsetof(MemoryDescriptor, PhysicalStart) == 8);

inline constexpr std::uint64_t memory_write_combining = 0x2;  // EFI_MEMORY_WC
inline constexpr std::uint64_t memory_write_back = 0x8;       // EFI_MEMORY_WB

inline constexpr std::uint64_t memory_read_protect = 0x2000;     // EFI_MEMORY_RP: neither read nor written
inline constexpr std::uint64_t memory_execute_protect = 0x4000;  // EFI_MEMORY_XP
inline constexpr std::uint64_t memory_read_only = 0x20000;       // EFI_MEMORY_RO

// EFI_MEMORY_ATTRIBUTE_PROTOCOL (section 37.7): what may be done with pages. Attributes are the three above.
struct MemoryAttributeProtocol {
    // `no_mapping` when the pages do not all have the same.
    Status(EFIAPI* GetMemoryAttributes)(MemoryAttributeProtocol* self, PhysicalAddress base,
                                        std::uint64_t length, std::uint64_t* attributes);
    Status(EFIAPI* SetMemoryAttributes)(MemoryAttributeProtocol* self, PhysicalAddress base,
                                        std::uint64_t length, std::uint64_t attributes);
    Status(EFIAPI* ClearMemoryAttributes)(MemoryAttributeProtocol* self, PhysicalAddress base,
                                          std::uint64_t length, std::uint64_t attributes);
};
static_assert(sizeof(MemoryAttributeProtocol) == 24);

// ---------------------------------------------------------------------------------------------------------------
// Time (section 8.3)

struct Time {
    std::uint16_t Year;   // 1900 to 9999
    std::uint8_t Month;   // 1 to 12
    std::uint8_t Day;     // 1 to 31
    std::uint8_t Hour;    // 0 to 23
    std::uint8_t Minute;  // 0 to 59
    std::uint8_t Second;  // 0 to 59
    std::uint8_t Pad1;
    std::uint32_t Nanosecond;  // 0 to 999,999,999
    std::int16_t TimeZone;     // minutes from UTC, -1440 to 1440, or 2047 for local time
    std::uint8_t Daylight;
    std::uint8_t Pad2;
};
static_assert(sizeof(Time) == 16);

// ---------------------------------------------------------------------------------------------------------------
// Console (chapter 12)

struct InputKey {
    std::uint16_t ScanCode;
    char16_t UnicodeChar;
};
static_assert(sizeof(InputKey) == 4);

// Scan codes (table 12.1)
inline constexpr std::uint16_t scan_none = 0;
inline constexpr std::uint16_t scan_up = 1;
inline constexpr std::uint16_t scan_down = 2;
inline constexpr std::uint16_t scan_right = 3;
inline constexpr std::uint16_t scan_left = 4;
inline constexpr std::uint16_t scan_home = 5;
inline constexpr std::uint16_t scan_end = 6;
inline constexpr std::uint16_t scan_insert = 7;
inline constexpr std::uint16_t scan_delete = 8;
inline constexpr std::uint16_t scan_page_up = 9;
inline constexpr std::uint16_t scan_page_down = 10;
inline constexpr std::uint16_t scan_f1 = 11;  // F1 to F10 are 11 to 20
inline constexpr std::uint16_t scan_escape = 23;

struct SimpleTextInputProtocol {
    Status(EFIAPI* Reset)(SimpleTextInputProtocol* self, std::uint8_t extended_verification);
    Status(EFIAPI* ReadKeyStroke)(SimpleTextInputProtocol* self, InputKey* key);
    Event WaitForKey;
};
static_assert(sizeof(SimpleTextInputProtocol) == 24);

struct SimpleTextOutputMode {
    std::int32_t MaxMode;
    std::int32_t Mode;
    std::int32_t Attribute;
    std::int32_t CursorColumn;
    std::int32_t CursorRow;
    std::uint8_t CursorVisible;
};

struct SimpleTextOutputProtocol {
    Status(EFIAPI* Reset)(SimpleTextOutputProtocol* self, std::uint8_t extended_verification);
    Status(EFIAPI* OutputString)(SimpleTextOutputProtocol* self, const char16_t* text);
    Status(EFIAPI* TestString)(SimpleTextOutputProtocol* self, const char16_t* text);
    Status(EFIAPI* QueryMode)(SimpleTextOutputProtocol* self, std::uint64_t mode, std::uint64_t* columns,
                              std::uint64_t* rows);
    Status(EFIAPI* SetMode)(SimpleTextOutputProtocol* self, std::uint64_t mode);
    Status(EFIAPI* SetAttribute)(SimpleTextOutputProtocol* self, std::uint64_t attribute);
    Status(EFIAPI* ClearScreen)(SimpleTextOutputProtocol* self);
    Status(EFIAPI* SetCursorPosition)(SimpleTextOutputProtocol* self, std::uint64_t column,
                                      std::uint64_t row);
    Status(EFIAPI* EnableCursor)(SimpleTextOutputProtocol* self, std::uint8_t visible);
    SimpleTextOutputMode* Mode;
};
static_assert(sizeof(SimpleTextOutputProtocol) == 80);

enum class PixelFormat : std::uint32_t {
    PixelRedGreenBlueReserved8BitPerColor = 0,
    PixelBlueGreenRedReserved8BitPerColor = 1,
    PixelBitMask = 2,
    PixelBltOnly = 3,
};

struct PixelBitmask {
    std::uint32_t RedMask;
    std::uint32_t GreenMask;
    std::uint32_t BlueMask;
    std::uint32_t ReservedMask;
};

struct GraphicsOutputModeInformation {
    std::uint32_t Version;
    std::uint32_t HorizontalResolution;  // pixels
    std::uint32_t VerticalResolution;    // pixels
    korvane::uefi::PixelFormat PixelFormat;
    PixelBitmask PixelInformation;
    std::uint32_t PixelsPerScanLine;  // at least HorizontalResolution
};
static_assert(sizeof(GraphicsOutputModeInformation) == 36);

struct GraphicsOutputMode {
    std::uint32_t MaxMode;  // modes are numbered 0 to MaxMode - 1
    std::uint32_t Mode;
    GraphicsOutputModeInformation* Info;
    std::uint64_t SizeOfInfo;
    PhysicalAddress FrameBufferBase;
    std::uint64_t FrameBufferSize;  // bytes
};
static_assert(sizeof(GraphicsOutputMode) == 40);

struct GraphicsOutputProtocol {
    // The information record is pool memory that the caller frees.
    Status(EFIAPI* QueryMode)(GraphicsOutputProtocol* self, std::uint32_t mode, std::uint64_t* size_of_info,
                              GraphicsOutputModeInformation** info);
    Status(EFIAPI* SetMode)(GraphicsOutputProtocol* self, std::uint32_t mode);
    Unused Blt;
    GraphicsOutputMode* Mode;
};
static_assert(sizeof(GraphicsOutputProtocol) == 32);

// ---------------------------------------------------------------------------------------------------------------
// Files and block devices (chapter 13)

inline constexpr std::uint64_t file_mode_read = 0x1;
inline constexpr std::uint64_t file_mode_write = 0x2;
inline constexpr std::uint64_t file_mode_create = 0x8000000000000000;

inline constexpr std::uint64_t file_read_only = 0x01;
inline constexpr std::uint64_t file_hidden = 0x02;
inline constexpr std::uint64_t file_system = 0x04;
inline constexpr std::uint64_t file_directory = 0x10;
inline constexpr std::uint64_t file_archive = 0x20;
inline constexpr std::uint64_t file_valid_attributes = 0x37;

// The argument of `FileProtocol::SetPosition` that means the end of the file.
inline constexpr std::uint64_t end_of_file_position = 0xFFFFFFFFFFFFFFFF;

struct FileProtocol {
    std::uint64_t Revision;
    Status(EFIAPI* Open)(FileProtocol* self, FileProtocol** opened, const char16_t* name, std::uint64_t mode,
                         std::uint64_t attributes);
    Status(EFIAPI* Close)(FileProtocol* self);
    // Closes the handle in every case; `warn_delete_failure` when the file stays.
    Status(EFIAPI* Delete)(FileProtocol* self);
    Status(EFIAPI* Read)(FileProtocol* self, std::uint64_t* size, void* buffer);
    Status(EFIAPI* Write)(FileProtocol* self, std::uint64_t* size, const void* buffer);
    Status(EFIAPI* GetPosition)(FileProtocol* self, std::uint64_t* position);
    Status(EFIAPI* SetPosition)(FileProtocol* self, std::uint64_t position);
    Status(EFIAPI* GetInfo)(FileProtocol* self, const Guid* type, std::uint64_t* size, void* buffer);
    Status(EFIAPI* SetInfo)(FileProtocol* self, const Guid* type, std::uint64_t size, const void* buffer);
    Status(EFIAPI* Flush)(FileProtocol* self);
};
static_assert(sizeof(FileProtocol) == 88);

struct SimpleFileSystemProtocol {
    std::uint64_t Revision;
    Status(EFIAPI* OpenVolume)(SimpleFileSystemProtocol* self, FileProtocol** root);
};
static_assert(sizeof(SimpleFileSystemProtocol) == 16);

// EFI_FILE_INFO. The name, with its terminating zero, runs to the end of the record.
struct FileInfo {
    std::uint64_t Size;  // of this record, name and terminator included
    std::uint64_t FileSize;
    std::uint64_t PhysicalSize;
    Time CreateTime;
    Time LastAccessTime;
    Time ModificationTime;
    std::uint64_t Attribute;
    char16_t FileName[1];
};
// Bytes of a FileInfo before its name.
inline constexpr std::uint64_t file_info_name_offset = 80;
static_assert(offsetof(FileInfo, Attribute) == 72);
static_assert(offsetof(FileInfo, FileName) == file_info_name_offset);

// EFI_FILE_SYSTEM_INFO. The label, with its terminating zero, runs to the end of the record.
struct FileSystemInfo {
    std::uint64_t Size;  // of this record, label and terminator included
    std::uint8_t ReadOnly;
    std::uint64_t VolumeSize;  // bytes
    std::uint64_t FreeSpace;   // bytes
    std::uint32_t BlockSize;
    char16_t VolumeLabel[1];
};
// Bytes of a FileSystemInfo before its label.
inline constexpr std::uint64_t file_system_info_label_offset = 36;
static_assert(offsetof(FileSystemInfo, VolumeLabel) == file_system_info_label_offset);

struct BlockIoMedia {
    std::uint32_t MediaId;
    std::uint8_t RemovableMedia;
    std::uint8_t MediaPresent;
    std::uint8_t LogicalPartition;
    std::uint8_t ReadOnly;
    std::uint8_t WriteCaching;
    std::uint32_t BlockSize;
    std::uint32_t IoAlign;  // 0 and 1 mean any buffer address, otherwise a power of two
    Lba LastBlock;
};
static_assert(offsetof(BlockIoMedia, BlockSize) == 12);
static_assert(offsetof(BlockIoMedia, LastBlock) == 24);

struct BlockIoProtocol {
    std::uint64_t Revision;
    BlockIoMedia* Media;
    Status(EFIAPI* Reset)(BlockIoProtocol* self, std::uint8_t extended_verification);
    // `size` is in bytes and a multiple of the block size.
    Status(EFIAPI* ReadBlocks)(BlockIoProtocol* self, std::uint32_t media_id, Lba lba, std::uint64_t size,
                               void* buffer);
    Status(EFIAPI* WriteBlocks)(BlockIoProtocol* self, std::uint32_t media_id, Lba lba, std::uint64_t size,
                                const void* buffer);
    Status(EFIAPI* FlushBlocks)(BlockIoProtocol* self);
};
static_assert(sizeof(BlockIoProtocol) == 48);

// ---------------------------------------------------------------------------------------------------------------
// Device paths (chapter 10) and the loaded image (section 9.1)

inline constexpr std::uint8_t device_path_media = 4;
inline constexpr std::uint8_t device_path_media_hard_drive = 1;
inline constexpr std::uint8_t device_path_media_file_path = 4;
inline constexpr std::uint8_t device_path_end = 0x7F;
inline constexpr std::uint8_t device_path_end_entire = 0xFF;

// The header that begins every node of a device path.
struct DevicePathNode {
    std::uint8_t Type;
    std::uint8_t SubType;
    std::array<std::uint8_t, 2> Length;  // little-endian, the header included; nodes have no alignment
};
static_assert(sizeof(DevicePathNode) == 4);

struct SystemTable;

struct LoadedImageProtocol {
    std::uint32_t Revision;
    Handle ParentHandle;
    uefi::SystemTable* SystemTable;
    Handle DeviceHandle;
    DevicePathNode* FilePath;
    void* Reserved;
    std::uint32_t LoadOptionsSize;  // bytes
    void* LoadOptions;
    void* ImageBase;
    std::uint64_t ImageSize;  // bytes
    MemoryType ImageCodeType;
    MemoryType ImageDataType;
    Unused Unload;
};
static_assert(sizeof(LoadedImageProtocol) == 96);
static_assert(offsetof(LoadedImageProtocol, ImageBase) == 64);

// The CPU architectural protocol (PI 1.7, volume 2, section 12.3).
struct CpuArchProtocol {
    Unused FlushDataCache;
    Unused EnableInterrupt;
    Unused DisableInterrupt;
    Unused GetInterruptState;
    Unused Init;
    Unused RegisterInterruptHandler;
    Unused GetTimerValue;
    Status(EFIAPI* SetMemoryAttributes)(CpuArchProtocol* self, PhysicalAddress base, std::uint64_t length,
                                        std::uint64_t attributes);
    std::uint32_t NumberOfTimers;
    std::uint32_t DmaBufferAlignment;
};
static_assert(sizeof(CpuArchProtocol) == 72);

// ---------------------------------------------------------------------------------------------------------------
// The tables (chapter 4)

struct TableHeader {
    std::uint64_t Signature;
    std::uint32_t Revision;    // major version in the upper 16 bits, minor version in the lower
    std::uint32_t HeaderSize;  // bytes of the whole table
    std::uint32_t Crc32;
    std::uint32_t Reserved;
};
static_assert(sizeof(TableHeader) == 24);

enum class LocateSearchType : std::uint32_t {
    AllHandles = 0,
    ByRegisterNotify = 1,
    ByProtocol = 2,
};

enum class ResetType : std::uint32_t {
    EfiResetCold = 0,
    EfiResetWarm = 1,
    EfiResetShutdown = 2,
};

struct BootServices {
    TableHeader Hdr;

    Unused RaiseTPL;
    Unused RestoreTPL;

    // `memory` is in and out: the address wanted, and the address given.
    Status(EFIAPI* AllocatePages)(AllocateType type, MemoryType memory_type, std::uint64_t pages,
                                  PhysicalAddress* memory);
    Status(EFIAPI* FreePages)(PhysicalAddress memory, std::uint64_t pages);
    Status(EFIAPI* GetMemoryMap)(std::uint64_t* map_size, MemoryDescriptor* map, std::uint64_t* map_key,
                                 std::uint64_t* descriptor_size, std::uint32_t* descriptor_version);
    Status(EFIAPI* AllocatePool)(MemoryType pool_type, std::uint64_t size, void** buffer);
    Status(EFIAPI* FreePool)(void* buffer);

    Unused CreateEvent;
    Unused SetTimer;
    Status(EFIAPI* WaitForEvent)(std::uint64_t count, Event* events, std::uint64_t* index);
    Unused SignalEvent;
    Unused CloseEvent;
    Status(EFIAPI* CheckEvent)(Event event);

    Unused InstallProtocolInterface;
    Unused ReinstallProtocolInterface;
    Unused UninstallProtocolInterface;
    Status(EFIAPI* HandleProtocol)(Handle handle, const Guid* protocol, void** interface);
    Unused Reserved;
    Unused RegisterProtocolNotify;
    Unused LocateHandle;
    Unused LocateDevicePath;
    Unused InstallConfigurationTable;

    Unused LoadImage;
    Unused StartImage;
    Status(EFIAPI* Exit)(Handle image, Status exit_status, std::uint64_t exit_data_size, char16_t* exit_data);
    Unused UnloadImage;
    Unused ExitBootServices;

    Unused GetNextMonotonicCount;
    Status(EFIAPI* Stall)(std::uint64_t microseconds);
    Status(EFIAPI* SetWatchdogTimer)(std::uint64_t timeout, std::uint64_t watchdog_code,
                                     std::uint64_t data_size, const char16_t* watchdog_data);

    Unused ConnectController;
    Unused DisconnectController;

    Unused OpenProtocol;
    Unused CloseProtocol;
    Unused OpenProtocolInformation;

    Unused ProtocolsPerHandle;
    // The handle buffer is pool memory that the caller frees.
    Status(EFIAPI* LocateHandleBuffer)(LocateSearchType search_type, const Guid* protocol, void* search_key,
                                       std::uint64_t* count, Handle** handles);
    Status(EFIAPI* LocateProtocol)(const Guid* protocol, void* registration, void** interface);
    Unused InstallMultipleProtocolInterfaces;
    Unused UninstallMultipleProtocolInterfaces;

    Unused CalculateCrc32;

    Unused CopyMem;
    Unused SetMem;
    Unused CreateEventEx;
};
static_assert(sizeof(BootServices) == 24 + 44 * 8);
static_assert(offsetof(BootServices, AllocatePages) == 40);
static_assert(offsetof(BootServices, WaitForEvent) == 96);
static_assert(offsetof(BootServices, HandleProtocol) == 152);
static_assert(offsetof(BootServices, Stall) == 248);
static_assert(offsetof(BootServices, LocateProtocol) == 320);

struct RuntimeServices {
    TableHeader Hdr;

    Status(EFIAPI* GetTime)(Time* time, void* capabilities);
    Unused SetTime;
    Unused GetWakeupTime;
    Unused SetWakeupTime;

    Unused SetVirtualAddressMap;
    Unused ConvertPointer;

    Status(EFIAPI* GetVariable)(const char16_t* name, const Guid* vendor, std::uint32_t* attributes,
                                std::uint64_t* data_size, void* data);
    Status(EFIAPI* GetNextVariableName)(std::uint64_t* name_size, char16_t* name, Guid* vendor);
    Unused SetVariable;

    Unused GetNextHighMonotonicCount;
    void(EFIAPI* ResetSystem)(ResetType type, Status status, std::uint64_t data_size, void* data);

    Unused UpdateCapsule;
    Unused QueryCapsuleCapabilities;

    Unused QueryVariableInfo;
};
static_assert(sizeof(RuntimeServices) == 24 + 14 * 8);
static_assert(offsetof(RuntimeServices, GetVariable) == 72);

struct ConfigurationTable {
    Guid VendorGuid;
    void* VendorTable;
};
static_assert(sizeof(ConfigurationTable) == 24);

struct SystemTable {
    TableHeader Hdr;
    char16_t* FirmwareVendor;
    std::uint32_t FirmwareRevision;
    Handle ConsoleInHandle;
    SimpleTextInputProtocol* ConIn;
    Handle ConsoleOutHandle;
    SimpleTextOutputProtocol* ConOut;
    Handle StandardErrorHandle;
    SimpleTextOutputProtocol* StdErr;
    uefi::RuntimeServices* RuntimeServices;
    uefi::BootServices* BootServices;
    std::uint64_t NumberOfTableEntries;
    uefi::ConfigurationTable* ConfigurationTable;
};
static_assert(sizeof(SystemTable) == 120);
static_assert(offsetof(SystemTable, ConIn) == 48);
static_assert(offsetof(SystemTable, BootServices) == 96);

inline constexpr std::uint64_t system_table_signature = 0x5453595320494249;      // "IBI SYST"
inline constexpr std::uint64_t boot_services_signature = 0x56524553544F4F42;     // "BOOTSERV"
inline constexpr std::uint64_t runtime_services_signature = 0x56524553544E5552;  // "RUNTSERV"

// ---------------------------------------------------------------------------------------------------------------
// Identifiers

inline constexpr Guid loaded_image_guid{
    0x5B1B31A1, 0x9562, 0x11D2, {0x8E, 0x3F, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
inline constexpr Guid device_path_guid{
    0x09576E91, 0x6D3F, 0x11D2, {0x8E, 0x39, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
inline constexpr Guid simple_text_input_guid{
    0x387477C1, 0x69C7, 0x11D2, {0x8E, 0x39, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
inline constexpr Guid simple_text_output_guid{
    0x387477C2, 0x69C7, 0x11D2, {0x8E, 0x39, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
inline constexpr Guid graphics_output_guid{
    0x9042A9DE, 0x23DC, 0x4A38, {0x96, 0xFB, 0x7A, 0xDE, 0xD0, 0x80, 0x51, 0x6A}};
inline constexpr Guid simple_file_system_guid{
    0x964E5B22, 0x6459, 0x11D2, {0x8E, 0x39, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
inline constexpr Guid block_io_guid{
    0x964E5B21, 0x6459, 0x11D2, {0x8E, 0x39, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
inline constexpr Guid file_info_guid{
    0x09576E92, 0x6D3F, 0x11D2, {0x8E, 0x39, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
inline constexpr Guid file_system_info_guid{
    0x09576E93, 0x6D3F, 0x11D2, {0x8E, 0x39, 0x00, 0xA0, 0xC9, 0x69, 0x72, 0x3B}};
inline constexpr Guid cpu_arch_guid{
    0x26BACCB1, 0x6F42, 0x11D4, {0xBC, 0xE7, 0x00, 0x80, 0xC7, 0x3C, 0x88, 0x81}};
inline constexpr Guid memory_attribute_guid{
    0xF4560CF6, 0x40EC, 0x4B4A, {0xA1, 0x92, 0xBF, 0x1D, 0x57, 0xD0, 0xB1, 0x89}};
inline constexpr Guid acpi_20_table_guid{
    0x8868E871, 0xE4F1, 0x11D3, {0xBC, 0x22, 0x00, 0x80, 0xC7, 0x3C, 0x88, 0x81}};
inline constexpr Guid acpi_10_table_guid{
    0xEB9D2D30, 0x2D88, 0x11D3, {0x9A, 0x16, 0x00, 0x90, 0x27, 0x3F, 0xC1, 0x4D}};
inline constexpr Guid smbios3_table_guid{
    0xF2FD1544, 0x9794, 0x4A2C, {0x99, 0x2E, 0xE5, 0xBB, 0xCF, 0x20, 0xE3, 0x94}};
inline constexpr Guid smbios_table_guid{
    0xEB9D2D31, 0x2D88, 0x11D3, {0x9A, 0x16, 0x00, 0x90, 0x27, 0x3F, 0xC1, 0x4D}};
// The vendor of `BootOrder` and the `Boot####` variables (section 3.3).
inline constexpr Guid global_variable_guid{
    0x8BE4DF61, 0x93CA, 0x11D2, {0xAA, 0x0D, 0x00, 0xE0, 0x98, 0x03, 0x2B, 0x8C}};

}  // namespace korvane::uefi
