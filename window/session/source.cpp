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
    listed.type = plainType(variable.area);
    return listed;
}

} // namespace plc
