// The one leak that is meant: a palette image leaves its colour map behind.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:CImg8::initColorMap\n"; }
