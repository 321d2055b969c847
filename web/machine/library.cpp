// What a C++ program expects to be there and WebAssembly has not: memory for `new`, the functions that the
// compiler calls behind the program's back, and those of the standard library that are not in its headers.
#include <bits/functexcept.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <new>

extern "C" std::uint8_t __heap_base;  // the linker's: the first address behind data and stack

namespace {

// ---- Memory ----------------------------------------------------------------------------------------

// Blocks come in sizes that are powers of two, each with its size in front. A block that is given back waits
// in the list of its size. New ones are cut from the memory between the module's data and where the machine's
// begins, and when that is used up, from new memory at the end.
struct Block {
    std::uint64_t order;  // its size is two to the power of this
    Block* next;          // while it is free
};

constexpr std::uint64_t header_size = 16;
constexpr std::uint64_t least_order = 5;
constexpr std::uint64_t orders = 40;
constexpr std::uint64_t machine_alignment = 0x01000000;  // where a machine's memory may begin
constexpr std::uint64_t memory_page = 65536;
constexpr std::uint64_t least_growth = 1024 * 1024;

Block* free_blocks[orders];
std::uint64_t room_begin;
std::uint64_t room_end;

// No room for new blocks ends the machine, as running into the end of memory would.
void make_room(std::uint64_t size) {
    if (room_begin == 0) {
        room_begin = (reinterpret_cast<std::uint64_t>(&__heap_base) + 15) / 16 * 16;
        room_end = (room_begin + machine_alignment - 1) / machine_alignment * machine_alignment;
    }
    if (room_end - room_begin >= size) return;
    const std::uint64_t growth = size > least_growth ? size : least_growth;
    const std::uint64_t pages = (growth + memory_page - 1) / memory_page;
    const std::uint64_t before = __builtin_wasm_memory_grow(0, pages);
    if (before == static_cast<std::uint64_t>(-1)) __builtin_trap();
    if (before * memory_page != room_end) room_begin = before * memory_page;
    room_end = (before + pages) * memory_page;
}

void* take_block(std::uint64_t bytes) {
    std::uint64_t order = least_order;
    while ((std::uint64_t{1} << order) < bytes + header_size)
        ++order;
    Block* block = free_blocks[order];
    if (block != nullptr) {
        free_blocks[order] = block->next;
    } else {
        const std::uint64_t size = std::uint64_t{1} << order;
        make_room(size);
        block = reinterpret_cast<Block*>(room_begin);
        room_begin += size;
        block->order = order;
    }
    return reinterpret_cast<std::uint8_t*>(block) + header_size;
}

void give_back(void* bytes) {
    if (bytes == nullptr) return;
    auto* block = reinterpret_cast<Block*>(static_cast<std::uint8_t*>(bytes) - header_size);
    block->next = free_blocks[block->order];
    free_blocks[block->order] = block;
}

}  // namespace

void* operator new(std::size_t size) {
    return take_block(size);
}
void* operator new[](std::size_t size) {
    return take_block(size);
}
void operator delete(void* bytes) noexcept {
    give_back(bytes);
}
void operator delete[](void* bytes) noexcept {
    give_back(bytes);
}
void operator delete(void* bytes, std::size_t) noexcept {
    give_back(bytes);
}
void operator delete[](void* bytes, std::size_t) noexcept {
    give_back(bytes);
}
// A buffer that std::stable_sort can do without.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return take_block(size);
}
void operator delete(void* bytes, const std::nothrow_t&) noexcept {
    give_back(bytes);
}

// ---- The compiler's functions ----------------------------------------------------------------------

extern "C" {

// WebAssembly has instructions for the first three, which the compiler puts here.
void* memcpy(void* destination, const void* source, std::size_t count) {
    __builtin_memcpy(destination, source, count);
    return destination;
}

void* memmove(void* destination, const void* source, std::size_t count) {
    __builtin_memmove(destination, source, count);
    return destination;
}

void* memset(void* destination, int byte, std::size_t count) {
    __builtin_memset(destination, byte, count);
    return destination;
}

__attribute__((no_builtin)) int memcmp(const void* left, const void* right, std::size_t count) {
    const auto* a = static_cast<const std::uint8_t*>(left);
    const auto* b = static_cast<const std::uint8_t*>(right);
    for (; count >= sizeof(std::uint64_t); count -= sizeof(std::uint64_t)) {
        std::uint64_t x = 0;
        std::uint64_t y = 0;
        __builtin_memcpy(&x, a, sizeof x);
        __builtin_memcpy(&y, b, sizeof y);
        // The first difference in memory is the most significant one with the bytes in reverse.
        if (x != y) return __builtin_bswap64(x) < __builtin_bswap64(y) ? -1 : 1;
        a += sizeof x;
        b += sizeof y;
    }
    for (; count != 0; --count, ++a, ++b)
        if (*a != *b) return *a < *b ? -1 : 1;
    return 0;
}

__attribute__((no_builtin)) void* memchr(const void* bytes, int value, std::size_t count) {
    const auto* at = static_cast<const std::uint8_t*>(bytes);
    for (; count != 0; --count, ++at)
        if (*at == static_cast<std::uint8_t>(value)) return const_cast<std::uint8_t*>(at);
    return nullptr;
}

__attribute__((no_builtin)) std::size_t strlen(const char* text) {
    const char* end = text;
    while (*end != 0)
        ++end;
    return static_cast<std::size_t>(end - text);
}

// Nothing is destroyed at the end: the module is thrown away whole.
int __cxa_atexit(void (*)(void*), void*, void*) {
    return 0;
}
void* __dso_handle = nullptr;

void __cxa_pure_virtual() {
    __builtin_trap();
}

void abort() {
    __builtin_trap();
}

// What the compiler calls for numbers of 128 bits.
using Wide = unsigned __int128;

Wide __multi3(Wide left, Wide right) {
    constexpr std::uint64_t half = 0xFFFFFFFF;
    const auto a = static_cast<std::uint64_t>(left);
    const auto b = static_cast<std::uint64_t>(right);
    const std::uint64_t low = (a & half) * (b & half);
    const std::uint64_t middle = (a >> 32) * (b & half) + (low >> 32);
    const std::uint64_t other_middle = (a & half) * (b >> 32) + (middle & half);
    const std::uint64_t high = (a >> 32) * (b >> 32) + (middle >> 32) + (other_middle >> 32) +
                               a * static_cast<std::uint64_t>(right >> 64) +
                               static_cast<std::uint64_t>(left >> 64) * b;
    return static_cast<Wide>(high) << 64 | other_middle << 32 | (low & half);
}

Wide __ashlti3(Wide number, int count) {
    const auto low = static_cast<std::uint64_t>(number);
    const auto high = static_cast<std::uint64_t>(number >> 64);
    if (count == 0) return number;
    if (count >= 64) return static_cast<Wide>(low << (count - 64)) << 64;
    return static_cast<Wide>(high << count | low >> (64 - count)) << 64 | low << count;
}

}  // extern "C"

// ---- The standard library's functions ----------------------------------------------------------------

// There are no exceptions: what would throw one is a mistake of ours, or memory that is used up.
namespace std {

void __throw_bad_alloc() {
    __builtin_trap();
}
void __throw_bad_array_new_length() {
    __builtin_trap();
}
void __throw_bad_function_call() {
    __builtin_trap();
}
void __throw_length_error(const char*) {
    __builtin_trap();
}
void __throw_logic_error(const char*) {
    __builtin_trap();
}
void __throw_out_of_range_fmt(const char*, ...) {
    __builtin_trap();
}

const nothrow_t nothrow{};

// The nodes of std::map. Its maps are small here (regions of memory, buffers of the pool): the tree is kept
// in order, but not in balance.

static _Rb_tree_node_base* next_node(_Rb_tree_node_base* node) {
    if (node->_M_right != nullptr) return _Rb_tree_node_base::_S_minimum(node->_M_right);
    _Rb_tree_node_base* above = node->_M_parent;
    while (node == above->_M_right) {
        node = above;
        above = above->_M_parent;
    }
    // The header stands behind the last node.
    return node->_M_right != above ? above : node;
}

static bool is_header(const _Rb_tree_node_base* node) {
    return node->_M_parent != nullptr && node->_M_parent->_M_parent == node && node->_M_color == _S_red;
}

_Rb_tree_node_base* _Rb_tree_increment(_Rb_tree_node_base* node) noexcept {
    return next_node(node);
}

const _Rb_tree_node_base* _Rb_tree_increment(const _Rb_tree_node_base* node) noexcept {
    return next_node(const_cast<_Rb_tree_node_base*>(node));
}

_Rb_tree_node_base* _Rb_tree_decrement(_Rb_tree_node_base* node) noexcept {
    if (is_header(node)) return node->_M_right;
    if (node->_M_left != nullptr) return _Rb_tree_node_base::_S_maximum(node->_M_left);
    _Rb_tree_node_base* above = node->_M_parent;
    while (node == above->_M_left) {
        node = above;
        above = above->_M_parent;
    }
    return above;
}

const _Rb_tree_node_base* _Rb_tree_decrement(const _Rb_tree_node_base* node) noexcept {
    return _Rb_tree_decrement(const_cast<_Rb_tree_node_base*>(node));
}

// Only the header is red, by which it is known.
void _Rb_tree_insert_and_rebalance(const bool to_the_left, _Rb_tree_node_base* node,
                                   _Rb_tree_node_base* parent, _Rb_tree_node_base& header) noexcept {
    node->_M_parent = parent;
    node->_M_left = nullptr;
    node->_M_right = nullptr;
    node->_M_color = _S_black;
    if (parent == &header) {
        header._M_parent = node;
        header._M_left = node;
        header._M_right = node;
    } else if (to_the_left) {
        parent->_M_left = node;
        if (parent == header._M_left) header._M_left = node;
    } else {
        parent->_M_right = node;
        if (parent == header._M_right) header._M_right = node;
    }
}

// Puts `other`, which may be null, in the place of a node.
static void put_in_place_of(_Rb_tree_node_base* node, _Rb_tree_node_base* other, _Rb_tree_node_base& header) {
    if (header._M_parent == node)
        header._M_parent = other;
    else if (node->_M_parent->_M_left == node)
        node->_M_parent->_M_left = other;
    else
        node->_M_parent->_M_right = other;
    if (other != nullptr) other->_M_parent = node->_M_parent;
}

_Rb_tree_node_base* _Rb_tree_rebalance_for_erase(_Rb_tree_node_base* const node,
                                                 _Rb_tree_node_base& header) noexcept {
    if (node->_M_left == nullptr) {
        put_in_place_of(node, node->_M_right, header);
    } else if (node->_M_right == nullptr) {
        put_in_place_of(node, node->_M_left, header);
    } else {
        _Rb_tree_node_base* next = _Rb_tree_node_base::_S_minimum(node->_M_right);
        if (next != node->_M_right) {
            put_in_place_of(next, next->_M_right, header);
            next->_M_right = node->_M_right;
            next->_M_right->_M_parent = next;
        }
        put_in_place_of(node, next, header);
        next->_M_left = node->_M_left;
        next->_M_left->_M_parent = next;
    }
    if (header._M_parent == nullptr) {
        header._M_left = &header;
        header._M_right = &header;
    } else {
        header._M_left = _Rb_tree_node_base::_S_minimum(header._M_parent);
        header._M_right = _Rb_tree_node_base::_S_maximum(header._M_parent);
    }
    return node;
}

}  // namespace std
