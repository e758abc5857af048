// SPDX-License-Identifier: MIT
/// \file
/// \brief The areas as the help explains them.
#ifndef RUNTIME_MODEL_AREA_GUIDE_H
#define RUNTIME_MODEL_AREA_GUIDE_H

#include <QString>

namespace plc
{

/// \return a table of the areas for the help: what they hold, how addresses are written, where they lie
QString areaGuide();

} // namespace plc

#endif
