// SPDX-License-Identifier: MIT
// Any bytes as what lies in the file of the gateway's spool.

#include "fuzz/check.h"
#include "fuzz/fuzz_target.h"
#include "gateway/spool/sample_code.h"

#include <cmath>

namespace
{

using fuzz::check;
using plc::Sample;

const std::size_t shortestSample = 3; // kind, name and time of one without a value

bool isSame(const Sample& a, const Sample& b)
{
    const auto* real = std::get_if<double>(&a.value);
    const auto* other = std::get_if<double>(&b.value);
    const bool isNoNumber = real != nullptr && other != nullptr && std::isnan(*real) && std::isnan(*other);
    return a.variable == b.variable && a.at == b.at && a.quality == b.quality &&
           (isNoNumber || a.value == b.value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    std::vector<Sample> samples;
    const bool isWhole = plc::samplesOfBytes(bytes, &samples);
    check(samples.size() <= size / shortestSample, "no sample takes less than it can");
    check(isWhole || size > 0, "no bytes are no samples");
    QByteArray written;
    for (const Sample& sample : samples) {
        check(sample.quality <= plc::SampleQuality::Bad, "the quality is one that there is");
        plc::appendSample(&written, sample, sample.variable);
    }
    std::vector<Sample> again;
    check(plc::samplesOfBytes(written, &again), "what was written can be read");
    check(again.size() == samples.size(), "as many samples as were written are read");
    for (std::size_t index = 0; index < again.size(); ++index)
        check(isSame(samples[index], again[index]), "what was written is what is read");
    return 0;
}
