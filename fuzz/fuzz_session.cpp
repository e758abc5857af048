// SPDX-License-Identifier: MIT
// A runtime that does anything: every entry point, in any order, with any arguments, settings and replies.

#include "fuzz/fuzz_target.h"
#include "fuzz/session_steps.h"

namespace
{

const int mostSteps = 250;

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::ByteSource source(data, size);
    const bool careful = source.byte() == fuzz::carefulInput;
    fuzz::CountLimit counts(source);
    fuzz::CheckedDriver driver(fuzz::takeSettings(source), careful);
    for (int step = 0; !source.empty() && step < mostSteps; ++step) {
        if (fuzz::isFull())
            break;
        fuzz::takeStep(driver, source, counts);
    }
    driver.finish();
    return 0;
}
