// Stands in for GoogleTest where no C++ run-time library is to be had (Microsoft's
// layout): the macros that the tests of the DLL use, in one process, with the same
// last lines and exit code. Values print as numbers only.
#pragma once

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace testing {

/// A test case; constructed before main, in a list.
struct Entry {
    const char *suite, *name;
    void (*body)();
    Entry* next = nullptr;
    inline static Entry *first, **end = &first;
    inline static bool failed;

    Entry(const char* suite, const char* name, void (*body)()) : suite(suite), name(name), body(body) {
        *end = this;
        end = &next;
    }
};

template <class T>
void show(T* value) {
    printf("%p ", static_cast<const void*>(value));
}
template <class T>
void show(const T& value) {
    printf("%I64d ", static_cast<long long>(value));
}

template <class Holds, class A, class B>
bool check(Holds holds, const char* file, int line, const char* text, const A& a, const B& b) {
    if (holds(a, b)) return true;
    Entry::failed = true;
    printf("%s:%d: Failure\n  %s\n  ", file, line, text);
    show(a);
    show(b);
    printf("\n");
    return false;
}

inline int runAll() {
    int passed = 0, failed = 0;
    for (Entry* e = Entry::first; e; e = e->next) {
        printf("[ RUN      ] %s.%s\n", e->suite, e->name);
        Entry::failed = false;
        e->body();
        printf("[%s] %s.%s\n", Entry::failed ? "  FAILED  " : "       OK ", e->suite, e->name);
        ++(Entry::failed ? failed : passed);
    }
    printf("[==========] %d tests from 1 test suite ran.\n[  PASSED  ] %d tests.\n", passed + failed, passed);
    return failed ? 1 : 0;
}

}  // namespace testing

#define TEST(suite, name)                                                      \
  static void suite##_##name();                                                \
  static testing::Entry suite##_##name##_entry(#suite, #name, suite##_##name); \
  static void suite##_##name()

#define GTEST_CHECK(op, a, b)                                                                                        \
  testing::check([](const auto& x, const auto& y) -> bool { return x op y; }, __FILE__, __LINE__, #a " " #op " " #b, \
                 a, b)

#define EXPECT_EQ(a, b) GTEST_CHECK(==, a, b)
#define EXPECT_LE(a, b) GTEST_CHECK(<=, a, b)
#define EXPECT_TRUE(x) GTEST_CHECK(==, static_cast<bool>(x), true)
#define EXPECT_FALSE(x) GTEST_CHECK(==, static_cast<bool>(x), false)
#define ASSERT_TRUE(x)  \
  if (EXPECT_TRUE(x)) { \
  } else return
