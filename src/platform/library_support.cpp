// What the header-only part of the standard library expects to be linked in.
#ifdef KORVANE_FREESTANDING

namespace std {

// std::string_view calls this for a position outside of its text. Every caller checks its positions, so getting here
// is a fault of the program, and a stop at the place is better than going on.
[[noreturn]] void __throw_out_of_range_fmt(const char*, ...) {
    __builtin_trap();
}

}  // namespace std

#endif
