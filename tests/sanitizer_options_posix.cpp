// What the sanitizers are told, in the test programs and in sanitized builds of the console program.
// Without sanitizers nothing calls these.
extern "C" const char* __asan_default_options();
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_suppressions();

/// An allocation beyond the sanitizer's limit is to fail as it does without it.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}

/// The picture library keeps a thread's last error text beyond its end, its HEVC encoder some tables.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libOpenImageIO\nleak:libx265\n";
}
