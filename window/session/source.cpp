// SPDX-License-Identifier: MIT
#include "window/session/source.h"

#include "runtime/model/area_table.h"

namespace plc
{

namespace
{

ValueType plainType(int area)
{
    switch (kindOf(area)) {
    case ElementKind::Word:
        return ValueType::Uint16;
    case ElementKind::DoubleWord:
        return ValueType::Uint32;
    case ElementKind::Bit:
    case ElementKind::BitInWord:
        break;
    }
    return ValueType::Bit;
}

} // namespace

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
