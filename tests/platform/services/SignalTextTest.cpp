#include "SignalText.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(SignalText, theNamesAreThoseOfTheSystem)
{
    for (const int signal : SignalText::kOfFaults) {
        EXPECT_EQ(std::string(SignalText::name(signal)), std::string("SIG") + sigabbrev_np(signal));
    }
    EXPECT_EQ(SignalText::name(SIGUSR1), "unknown");
}

TEST(SignalText, aCodeBelongsToItsSignal)
{
    EXPECT_TRUE(SignalText::code(SIGSEGV, SEGV_ACCERR).starts_with("SEGV_ACCERR: "));
    EXPECT_TRUE(SignalText::code(SIGFPE, SEGV_ACCERR).starts_with("FPE_INTOVF: "));
    EXPECT_TRUE(SignalText::code(SIGABRT, SI_TKILL).starts_with("SI_TKILL: "));
    EXPECT_TRUE(SignalText::code(SIGTRAP, SI_KERNEL).starts_with("SI_KERNEL: "));
    EXPECT_EQ(SignalText::code(SIGSEGV, 99), "unknown");
    EXPECT_EQ(SignalText::code(SIGABRT, 1), "unknown");
}

TEST(SignalText, aFaultIsNotSent)
{
    EXPECT_TRUE(SignalText::isSent(SI_USER));
    EXPECT_TRUE(SignalText::isSent(SI_TKILL));
    EXPECT_TRUE(SignalText::isSent(SI_QUEUE));
    EXPECT_FALSE(SignalText::isSent(SEGV_MAPERR));
    EXPECT_FALSE(SignalText::isSent(SI_KERNEL));
}
