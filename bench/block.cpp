// SPDX-License-Identifier: MIT
#include "bench/block.h"

#include "frames/frame_bytes.h"
#include "runtime/modbus/request_pieces.h"

namespace bench
{

namespace
{

Block blockOf(const QByteArray& frame)
{
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(frame.constData());
    return {bytes[FUNCTION_OFFSET] == FC_READ_COILS, static_cast<int>(Get16(bytes + ADDRESS_OFFSET)),
            static_cast<int>(Get16(bytes + FRAME_VALUE_OFFSET))};
}

Block blockOf(const plc::Variable& variable)
{
    const plc::Variable asked = plc::wordsOf(variable);
    const int base = static_cast<int>(getPlcAdd(asked.area));
    const int each = plc::kindOf(asked.area) == plc::ElementKind::DoubleWord ? 2 : 1;
    return {IsBitArea(asked.area), (base + each * asked.element) & 0xFFFF, each * asked.count};
}

template <class Source>
Blocks blocksOfEach(const std::vector<Source>& sources)
{
    Blocks blocks;
    for (const Source& source : sources)
        blocks.push_back(blockOf(source));
    return blocks;
}

} // namespace

Blocks blocksOf(const std::vector<QByteArray>& frames)
{
    return blocksOfEach(frames);
}

Blocks blocksOf(const std::vector<plc::Variable>& variables)
{
    return blocksOfEach(variables);
}

} // namespace bench
