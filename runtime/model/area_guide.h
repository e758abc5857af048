/// \file
/// \brief The fifteen areas as the help explains them, and where they lie in the controller.
#ifndef RUNTIME_MODEL_AREA_GUIDE_H
#define RUNTIME_MODEL_AREA_GUIDE_H

#include <QString>

namespace plc
{

/// \return a table of the areas for the help: what they hold, how addresses are written, where they lie
QString areaGuide();

/// \return true when the elements of \a area lie among the controller's coils, else among its registers
bool liesInCoils(int area);

/// \return the controller's coil or register that holds \a element, 0..65535; of a double word the low half
int modbusAddress(int area, int element);

} // namespace plc

#endif
