// SPDX-License-Identifier: MIT
#include "driver_state.h"

#include "driver/driver_fixture.h"

#include <sstream>

namespace
{

const int ELEMENTS = 16;

void PutList(std::ostream& out, const char* title, const QList<RW_VAR>& list)
{
    for (int i = 0; i < list.size(); ++i)
        out << title << " " << Describe(list.at(i)) << "\n";
}

void PutFrames(std::ostream& out)
{
    for (const Protocol& protocol : PLC_driver.protocolList)
        out << "frame " << toHex(protocol.frame) << ", " << protocol.frameLength << " bytes, reply "
            << protocol.replyLength << ", data " << protocol.dataLength << " at " << protocol.dataOffset
            << ", " << Describe(protocol.var) << "\n";
}

void PutStations(std::ostream& out)
{
    for (const int station : PLC_driver.stationMap.keys())
        out << "off " << station << "\n";
    for (const EXTENDVAR& entry : PLC_driver.extendList)
        if (entry.value.count('\0') != entry.value.size())
            out << "station " << entry.station << " area " << entry.area << " element " << entry.address
                << ": " << toHex(entry.value) << "\n";
}

template <typename Cell>
void PutCells(std::ostream& out, const char* title, int area, const Cell* cells)
{
    for (int i = 0; i < ELEMENTS; ++i)
        if (cells[i] != Cell())
            out << title << " " << area << " element " << i << ": " << static_cast<unsigned int>(cells[i])
                << "\n";
}

void PutImage(std::ostream& out)
{
    for (int area = 0; area < 8; ++area)
        PutCells(out, "bits", area, PLC_driver.image.bitArea[area]);
    for (int area = 0; area < 5; ++area)
        PutCells(out, "words", area, PLC_driver.image.wordArea[area]);
    PutCells(out, "double words", 0, PLC_driver.image.dwordArea);
}

} // namespace

std::string Describe(const RW_VAR& var)
{
    std::ostringstream out;
    out << "key " << var.hostKey << "/" << var.hostSubKey << " flag " << var.accessFlag << " spare "
        << var.spare3 << "/" << var.spare13 << " group " << var.stationGroup << " '" << var.name.toStdString()
        << "' '" << var.name2.toStdString() << "' area " << var.area << " address " << var.address
        << " station " << var.station << " count " << var.count << " selector " << var.storeSelector
        << " data " << toHex(var.data);
    return out.str();
}

std::string DescribeDriver()
{
    std::ostringstream out;
    PutList(out, "cyclic", PLC_driver.readList);
    PutList(out, "write", PLC_driver.writeList);
    PutList(out, "once", PLC_driver.onceReadList);
    PutFrames(out);
    PutStations(out);
    PutImage(out);
    out << "result " << PLC_driver.retVar.result << " " << Describe(PLC_driver.retVar) << "\n";
    out << "last failed " << static_cast<int>(PLC_driver.lastFailed) << "\n";
    return out.str();
}
