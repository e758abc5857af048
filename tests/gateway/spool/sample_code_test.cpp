// SPDX-License-Identifier: MIT
#include "gateway/spool/sample_code.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace plc
{

namespace
{

Sample sampleOf(const SampleValue& value)
{
    return {7, 1700000000123, value, SampleQuality::Good};
}

TEST(SampleCode, EveryKindOfValueComesBackAsItWas)
{
    const SampleValue values[] = {std::monostate(),
                                  false,
                                  true,
                                  qint64(0),
                                  qint64(-1),
                                  std::numeric_limits<qint64>::min(),
                                  std::numeric_limits<qint64>::max(),
                                  std::numeric_limits<quint64>::max(),
                                  -0.1,
                                  std::numeric_limits<double>::infinity(),
                                  QString(),
                                  QStringLiteral("Öl läuft")};
    QByteArray bytes;
    for (const SampleValue& value : values)
        appendSample(&bytes, sampleOf(value), 300);
    std::vector<Sample> samples;
    ASSERT_TRUE(samplesOfBytes(bytes, &samples));
    ASSERT_EQ(std::size(values), samples.size());
    for (std::size_t index = 0; index < samples.size(); ++index) {
        EXPECT_EQ(values[index], samples[index].value) << index;
        EXPECT_EQ(300U, samples[index].variable);
        EXPECT_EQ(1700000000123, samples[index].at);
    }
}

TEST(SampleCode, ANumberThatIsNoneStaysOne)
{
    QByteArray bytes;
    appendSample(&bytes, sampleOf(std::nan("")), 1);
    std::vector<Sample> samples;
    ASSERT_TRUE(samplesOfBytes(bytes, &samples));
    EXPECT_TRUE(std::isnan(std::get<double>(samples.at(0).value)));
}

TEST(SampleCode, QualityAndAMissingTimeComeBack)
{
    QByteArray bytes;
    appendSample(&bytes, {0, -1, {}, SampleQuality::Bad}, 0);
    appendSample(&bytes, {0, 5, true, SampleQuality::Stale}, 0);
    std::vector<Sample> samples;
    ASSERT_TRUE(samplesOfBytes(bytes, &samples));
    EXPECT_EQ(SampleQuality::Bad, samples.at(0).quality);
    EXPECT_EQ(-1, samples.at(0).at);
    EXPECT_EQ(SampleQuality::Stale, samples.at(1).quality);
}

TEST(SampleCode, BytesThatAreCutOffAreNoSamples)
{
    QByteArray bytes;
    appendSample(&bytes, sampleOf(QStringLiteral("abc")), 200);
    for (int size = 1; size < bytes.size(); ++size) {
        std::vector<Sample> samples;
        EXPECT_FALSE(samplesOfBytes(bytes.left(size), &samples)) << size;
        EXPECT_TRUE(samples.empty());
    }
}

TEST(SampleCode, UnknownKindsAndQualitiesAreNoSamples)
{
    std::vector<Sample> samples;
    EXPECT_FALSE(samplesOfBytes(QByteArray("\x0F\x01\x01", 3), &samples));
    EXPECT_FALSE(samplesOfBytes(QByteArray("\x70\x01\x01", 3), &samples));
    EXPECT_FALSE(samplesOfBytes(QByteArray(20, '\xFF'), &samples));
}

} // namespace

} // namespace plc
