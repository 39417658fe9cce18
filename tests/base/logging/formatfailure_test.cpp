// A C library that cannot print what it is given.
#ifdef __MINGW32__

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <stdexcept>
#include <string>
#include <utility>

#include "base/logging/log.h"
#include "thrown.h"

namespace {

enum class Answer { True, Refusal, OneTooMany };

// What the next measurement of a format answers.
Answer g_next = Answer::True;

int Given(int length) {
    switch (std::exchange(g_next, Answer::True)) {
        case Answer::Refusal:
            return -1;
        case Answer::OneTooMany:
            return length + 1;
        default:
            return length;
    }
}

using MeasureNarrow = int (*)(const char*, va_list);
using MeasureWide = int (*)(const wchar_t*, va_list);

}  // namespace

// The program's own import slots.
#ifdef _M_IX86
#define IMPORT_SLOT(name) asm("__imp__" #name)
#else
#define IMPORT_SLOT(name) asm("__imp_" #name)
#endif
extern "C" MeasureNarrow g_narrowSlot IMPORT_SLOT(_vscprintf);
extern "C" MeasureWide g_wideSlot IMPORT_SLOT(_vscwprintf);

namespace {

// While it lives, calls through the slot go to the function.
class SlotReplacement {
  public:
    SlotReplacement(void** pSlot, void* pFunction) : m_pSlot(pSlot), m_pBefore(*pSlot) { Put(pFunction); }
    SlotReplacement(const SlotReplacement&) = delete;
    SlotReplacement& operator=(const SlotReplacement&) = delete;
    ~SlotReplacement() { Put(m_pBefore); }

  private:
    void Put(void* pFunction) {
        DWORD before = 0;
        if (!VirtualProtect(m_pSlot, sizeof(void*), PAGE_READWRITE, &before)) return;
        *m_pSlot = pFunction;
        VirtualProtect(m_pSlot, sizeof(void*), before, &before);
    }

    void** m_pSlot;
    void* m_pBefore;
};

MeasureNarrow g_systemsNarrow = nullptr;
MeasureWide g_systemsWide = nullptr;
int GiveNarrow(const char* format, va_list arguments) { return Given(g_systemsNarrow(format, arguments)); }
int GiveWide(const wchar_t* format, va_list arguments) { return Given(g_systemsWide(format, arguments)); }

}  // namespace

namespace base::logging {
namespace {

TEST(FormatFailureTest, AFormatThatCannotBeMeasuredOrPrintedThrows) {
    g_systemsNarrow = g_narrowSlot;
    g_systemsWide = g_wideSlot;
    const SlotReplacement narrow(reinterpret_cast<void**>(&g_narrowSlot),
                                 reinterpret_cast<void*>(&GiveNarrow));
    const SlotReplacement wide(reinterpret_cast<void**>(&g_wideSlot), reinterpret_cast<void*>(&GiveWide));
    const std::string expected = "base/logging/log.cpp(LINE) : the format cannot be printed.\n";
    for (const Answer answer : {Answer::Refusal, Answer::OneTooMany}) {
        g_next = answer;
        EXPECT_EQ(expected, tests::Thrown<std::runtime_error>([] { Format("%d", 7); }));
        g_next = answer;
        EXPECT_EQ(expected, tests::Thrown<std::runtime_error>([] { Format(L"%d", 7); }));
    }
    EXPECT_EQ("7", Format("%d", 7));
}

}  // namespace
}  // namespace base::logging

#endif
