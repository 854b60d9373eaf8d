#pragma once

// Every GUI test is compiled with this header first. QTest's checks (QVERIFY, QCOMPARE and the
// waits QTRY_VERIFY, QTRY_COMPARE built on them) report to a QTest run; under GoogleTest there
// is none, so a failed wait only returned from the test, which then passed. Here they report to
// GoogleTest as well, and still leave the test at the first failure.
#include <QtTest/qtestcase.h>
#include <gtest/gtest.h>

#undef QVERIFY
#define QVERIFY(statement)                                                                         \
    do {                                                                                           \
        if (!static_cast<bool>(statement)) {                                                       \
            ADD_FAILURE() << "QVERIFY(" #statement ") failed";                                     \
            return;                                                                                \
        }                                                                                          \
    } while (false)

#undef QVERIFY2
#define QVERIFY2(statement, description)                                                           \
    do {                                                                                           \
        if (!static_cast<bool>(statement)) {                                                       \
            ADD_FAILURE() << "QVERIFY(" #statement ") failed: " << (description);                  \
            return;                                                                                \
        }                                                                                          \
    } while (false)

#undef QCOMPARE
#define QCOMPARE(actual, expected)                                                                 \
    do {                                                                                           \
        if (!((actual) == (expected))) {                                                           \
            EXPECT_EQ(actual, expected) << "QCOMPARE(" #actual ", " #expected ")";                 \
            return;                                                                                \
        }                                                                                          \
    } while (false)

#undef QFAIL
#define QFAIL(message)                                                                             \
    do {                                                                                           \
        ADD_FAILURE() << (message);                                                                \
        return;                                                                                    \
    } while (false)
