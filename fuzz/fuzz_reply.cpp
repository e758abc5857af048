// SPDX-License-Identifier: MIT
// One request of any kind and what comes back for it: any bytes, any announced length, any settings.

#include "fuzz/byte_source.h"
#include "fuzz/checked_driver.h"
#include "fuzz/driver_values.h"
#include "fuzz/fuzz_target.h"

namespace
{

using fuzz::ByteSource;
using fuzz::CheckedDriver;

const int mostReplies = 12; // more than the retries and frames of one request, mostly

void queue(CheckedDriver& driver, ByteSource& source, fuzz::CountLimit& counts)
{
    const int list = source.below(3);
    RW_VAR var = fuzz::takeRecord(source, driver.settings());
    var.count = counts.cut(var.count, driver.settings().multiStation != 0);
    if (list == 0)
        driver.addRead(&var);
    else if (list == 1)
        driver.addWrite(&var, 1);
    else
        driver.addOnceRead(&var, 1);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ByteSource source(data, size);
    const bool careful = source.byte() == fuzz::carefulInput;
    fuzz::CountLimit counts(source);
    CheckedDriver driver(fuzz::takeSettings(source), careful);
    queue(driver, source, counts);
    // Another write, so that a purge and a merged bit have more than one to choose from.
    if (source.flag())
        queue(driver, source, counts);
    for (int replies = 0; !source.empty() && replies < mostReplies; ++replies) {
        driver.poll();
        fuzz::takeReply(source, driver);
    }
    driver.finish();
    return 0;
}
