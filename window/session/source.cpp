// SPDX-License-Identifier: MIT
#include "window/session/source.h"

namespace plc
{

ListedVariable asListed(const Variable& variable)
{
    ListedVariable listed;
    listed.name = variableText(variable);
    listed.elements = variable;
    listed.count = variable.count;
    listed.type = variable.area == 14  ? ValueType::Uint32
                  : variable.area <= 8 ? ValueType::Bit
                                       : ValueType::Uint16;
    return listed;
}

} // namespace plc
