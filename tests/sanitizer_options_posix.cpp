// Under the address sanitizer an allocation beyond its limit is to fail as it does without it.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
