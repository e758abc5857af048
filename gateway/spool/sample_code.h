// SPDX-License-Identifier: MIT
/// \file
/// \brief Samples as bytes, the way they lie in the spool's file.
///
/// A sample stands for itself, so two runs of bytes put together are the samples of both. Numbers are
/// little-endian or of seven bits a byte, the same on every machine.
#ifndef GATEWAY_SPOOL_SAMPLE_CODE_H
#define GATEWAY_SPOOL_SAMPLE_CODE_H

#include "gateway/values/sample.h"

#include <QByteArray>

#include <vector>

namespace plc
{

/// Appends the bytes of \a sample. Text that has no UTF-8 (half a surrogate pair) loses that character.
/// \param name what stands for the variable instead of its index
void appendSample(QByteArray* bytes, const Sample& sample, quint32 name);

/// \param samples gets those of \a bytes, each with its name in place of the index of the variable
/// \return false when \a bytes are no samples; what was whole before that is in \a samples
bool samplesOfBytes(const QByteArray& bytes, std::vector<Sample>* samples);

} // namespace plc

#endif
