// SPDX-License-Identifier: MIT
/// \file
/// \brief What every frame that the driver hands out must be, whatever was queued.
#ifndef FUZZ_FRAME_CHECKS_H
#define FUZZ_FRAME_CHECKS_H

struct Protocol;

namespace fuzz
{

/// \param remote the format that the settings asked for when the frame was built
void checkFrame(const Protocol& frame, bool remote);

} // namespace fuzz

#endif
