// A host that loads and frees the DLL again and again, as those with plug-ins do.
#include <gtest/gtest.h>
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace {

/// A copy under another name: this program is linked to the DLL itself, which therefore stays loaded.
constexpr char kCopy[] = "tilepress_reload.dll";

/// Loads the copy, calls into it so that it makes its tables, and frees it again.
bool loadAndFree() {
    const HMODULE library = LoadLibraryA(kCopy);
    if (!library) return false;
    using Enable = short(__cdecl*)();
    using Disable = void(__cdecl*)();
    const auto enable =
        reinterpret_cast<Enable>(reinterpret_cast<void*>(GetProcAddress(library, "cit_enable_decode_gr4")));
    const auto disable =
        reinterpret_cast<Disable>(reinterpret_cast<void*>(GetProcAddress(library, "cit_disable_decode_gr4")));
    const bool called = enable && disable && enable();
    if (called) disable();
    return FreeLibrary(library) && called && !GetModuleHandleA(kCopy);
}

DWORD nextThreadSlot() {
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return slot;
}

TEST(Reload, ThreeThousandTimesLeaveNothingBehind) {
    char original[MAX_PATH], *name = nullptr;
    ASSERT_TRUE(GetModuleFileNameA(GetModuleHandleA("tilepress.dll"), original, MAX_PATH));
    char copy[MAX_PATH];
    ASSERT_TRUE(GetFullPathNameA(original, MAX_PATH, copy, &name));
    ASSERT_TRUE(name && name + sizeof kCopy < copy + MAX_PATH);
    strcpy(name, kCopy);
    ASSERT_TRUE(CopyFileA(original, copy, FALSE));

    EXPECT_TRUE(loadAndFree());
    const DWORD slot = nextThreadSlot();
    DWORD before = 0, after = 0;
    GetProcessHandleCount(GetCurrentProcess(), &before);
    int good = 0;
    while (good < 3000 && loadAndFree()) ++good;
    GetProcessHandleCount(GetCurrentProcess(), &after);
    EXPECT_EQ(good, 3000);
    EXPECT_EQ(nextThreadSlot(), slot);
    EXPECT_LE(after, before + 8);
    DeleteFileA(copy);
}

}  // namespace
