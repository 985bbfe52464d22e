// What holds after every fault, checked at once.
#pragma once

#include "tests/support/CallersState.h"
#include "tests/support/RoundCost.h"

// The call, which brings its fault about anew each time that it is made, ends as documented, leaves
// the caller's state as it was and nothing behind but what is allowed; without the fault, the library
// works.
template <class Result, class Call, class Works>
void ExpectCleanFault(const Result& documented, const Call& call, const Works& works,
                      const RoundCost::Allowance& allowed = {})
{
    const testing::AssertionResult clean = CostsAtMost(allowed, 1, [&] {
        const CallersState before = CallersState::Now();
        EXPECT_EQ(call(), documented);
        EXPECT_EQ(CallersState::Now(), before);
    });
    EXPECT_TRUE(clean);
    works();
}
