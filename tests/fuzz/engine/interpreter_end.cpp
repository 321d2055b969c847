// Linked behind the interpreter: where its variables end.
extern "C" {
alignas(64) char fuzz_data_end[64] = {1};
alignas(64) char fuzz_bss_end[64];
}
