// Linked in front of the interpreter: where its variables begin.
extern "C" {
alignas(64) char fuzz_data_begin[64] = {1};
alignas(64) char fuzz_bss_begin[64];
}
