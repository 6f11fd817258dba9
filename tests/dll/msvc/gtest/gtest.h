// Stands in for GoogleTest where no C++ run-time library is to be had (Microsoft's
// layout): TEST, TEST_F and the plain EXPECT_ and ASSERT_ macros, in one process,
// with the same last lines and exit code. Values print as numbers only.
#pragma once

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <type_traits>

namespace testing {

struct Test {
    virtual ~Test() {}
    virtual void SetUp() {}
    virtual void TearDown() {}
    virtual void TestBody() = 0;
};

/// A test case; constructed before main, in a list.
struct Entry {
    const char *suite, *name;
    Test* (*make)();
    Entry* next = nullptr;
    inline static Entry *first, **end = &first;
    inline static bool failed;

    Entry(const char* suite, const char* name, Test* (*make)()) : suite(suite), name(name), make(make) {
        *end = this;
        end = &next;
    }
};

template <class T>
void show(const T& value) {
    if constexpr (std::is_same_v<T, bool>) printf("%s", value ? "true" : "false");
    else if constexpr (std::is_enum_v<T>) printf("%ld", static_cast<long>(value));
    else if constexpr (std::is_floating_point_v<T>) printf("%.17g", static_cast<double>(value));
    else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) printf("%I64d", static_cast<long long>(value));
    else if constexpr (std::is_integral_v<T>) printf("%I64u", static_cast<unsigned long long>(value));
    else if constexpr (std::is_pointer_v<T>) printf("%p", static_cast<const void*>(value));
    else printf("a value of %u bytes", static_cast<unsigned>(sizeof value));
}

/// Prints what follows `<<` when the check before it failed.
struct Message {
    bool armed;

    template <class T>
    Message& operator<<(const T& value) {
        if (!armed) return *this;
        if constexpr (std::is_convertible_v<T, const char*>) printf("%s", static_cast<const char*>(value));
        else show(value);
        return *this;
    }
    ~Message() {
        if (armed) printf("\n");
    }
};

/// Lets an ASSERT_ return from a void function after its message.
struct Return {
    void operator=(const Message&) const {}
};

template <class Holds, class A, class B>
bool report(Holds holds, const char* file, int line, const char* text, const A& a, const B& b) {
    if (holds(a, b)) return true;
    Entry::failed = true;
    printf("%s:%d: Failure\n  %s\n  ", file, line, text);
    show(a);
    printf(" and ");
    show(b);
    printf("\n");
    return false;
}

/// Runs every test, or those of the suite that --gtest_filter=SUITE.* names.
inline int runAll(int argc, char** argv) {
    const char* only = "";
    for (int i = 1; i < argc; ++i)
        if (!strncmp(argv[i], "--gtest_filter=", 15)) only = argv[i] + 15;
    const size_t length = strcspn(only, ".*");
    int passed = 0, failed = 0;
    for (Entry* e = Entry::first; e; e = e->next) {
        if (strncmp(only, e->suite, length)) continue;
        printf("[ RUN      ] %s.%s\n", e->suite, e->name);
        Entry::failed = false;
        Test* test = e->make();
        test->SetUp();
        test->TestBody();
        test->TearDown();
        delete test;
        printf("[%s] %s.%s\n", Entry::failed ? "  FAILED  " : "       OK ", e->suite, e->name);
        ++(Entry::failed ? failed : passed);
    }
    printf("[==========] %d tests from 1 test suite ran.\n[  PASSED  ] %d tests.\n", passed + failed, passed);
    return failed ? 1 : 0;
}

}  // namespace testing

#define GTEST_MAKE(suite, name, base)                                                                                 \
  struct suite##_##name : base {                                                                                      \
    void TestBody() override;                                                                                         \
  };                                                                                                                  \
  static testing::Entry suite##_##name##_entry(#suite, #name, []() -> testing::Test* { return new suite##_##name; }); \
  void suite##_##name::TestBody()
#define TEST(suite, name) GTEST_MAKE(suite, name, testing::Test)
#define TEST_F(suite, name) GTEST_MAKE(suite, name, suite)

#define GTEST_OP(op) [](const auto& x, const auto& y) -> bool { return x op y; }
#define GTEST_SOFT(op, text, a, b) \
  testing::Message { !testing::report(op, __FILE__, __LINE__, text, a, b) }
#define GTEST_HARD(op, text, a, b)                                             \
  if (bool good = testing::report(op, __FILE__, __LINE__, text, a, b); good) { \
  } else return testing::Return() = testing::Message {                         \
      true                                                                     \
    }

#define EXPECT_TRUE(x) GTEST_SOFT(GTEST_OP(==), #x, static_cast<bool>(x), true)
#define EXPECT_FALSE(x) GTEST_SOFT(GTEST_OP(==), "not " #x, static_cast<bool>(x), false)
#define EXPECT_EQ(a, b) GTEST_SOFT(GTEST_OP(==), #a " == " #b, a, b)
#define EXPECT_NE(a, b) GTEST_SOFT(GTEST_OP(!=), #a " != " #b, a, b)
#define EXPECT_LT(a, b) GTEST_SOFT(GTEST_OP(<), #a " < " #b, a, b)
#define EXPECT_LE(a, b) GTEST_SOFT(GTEST_OP(<=), #a " <= " #b, a, b)
#define EXPECT_GT(a, b) GTEST_SOFT(GTEST_OP(>), #a " > " #b, a, b)
#define EXPECT_GE(a, b) GTEST_SOFT(GTEST_OP(>=), #a " >= " #b, a, b)
#define EXPECT_NEAR(a, b, d) GTEST_SOFT([&](double x, double y) { return fabs(x - y) <= (d); }, #a " near " #b, a, b)
#define ASSERT_TRUE(x) GTEST_HARD(GTEST_OP(==), #x, static_cast<bool>(x), true)
#define ASSERT_FALSE(x) GTEST_HARD(GTEST_OP(==), "not " #x, static_cast<bool>(x), false)
#define ASSERT_EQ(a, b) GTEST_HARD(GTEST_OP(==), #a " == " #b, a, b)
#define ASSERT_NE(a, b) GTEST_HARD(GTEST_OP(!=), #a " != " #b, a, b)
