// Sanitizers answer a request that cannot be met with null, as the heap does.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
