// SPDX-License-Identifier: MIT
#include "allocation_sweep.h"

namespace
{

HOST_VAR Cyclic(int area, const char* address, int count, int station = 1)
{
    HOST_VAR var = HOST_VAR();
    var.area = static_cast<unsigned char>(area);
    var.station = static_cast<unsigned char>(station);
    var.address = address;
    var.name = QString("level");
    var.count = count;
    return var;
}

class RebuildSweep : public AllocationSweep
{
protected:
    /// Rebuilds with \a variables in place of a read list of two. Without memory the new list is empty: half
    /// a list would look like a whole one.
    void sweepRebuild(const QList<HOST_VAR>& variables, int multiStation = 0)
    {
        QList<HOST_VAR> list = variables;
        sweep({[=] {
                   info.multiStation = multiStation;
                   queueReadOf(1, 3);
                   queueReadOf(2, 4);
               },
               [&list] { return ReCreatReadVarList(&list); },
               0,
               {},
               Leaves::REFUSED_LIST});
    }
};

} // namespace

TEST_F(RebuildSweep, OneVariable)
{
    sweepRebuild({Cyclic(9, "0", 2)});
}

TEST_F(RebuildSweep, VariablesThatAreMergedIntoBlocks)
{
    sweepRebuild({Cyclic(9, "0", 2), Cyclic(9, "5", 2), Cyclic(9, "500", 2), Cyclic(9, "505", 1)});
}

TEST_F(RebuildSweep, UnsortedVariablesOfSeveralAreas)
{
    sweepRebuild({Cyclic(10, "7", 1), Cyclic(2, "900", 3), Cyclic(2, "0", 3), Cyclic(8, "10.3", 20),
                  Cyclic(14, "203", 3), Cyclic(1, "17", 1)});
}

TEST_F(RebuildSweep, AVariableOfThreePieces)
{
    sweepRebuild({Cyclic(9, "0", 250)});
}

TEST_F(RebuildSweep, VariablesOfTwoStations)
{
    sweepRebuild({Cyclic(9, "0", 2, 1), Cyclic(9, "5", 2, 2), Cyclic(9, "3", 1, 1), Cyclic(3, "0", 9, 2)}, 1);
}

TEST_F(RebuildSweep, AVariableOfThreePiecesAtOneOfTwoStations)
{
    sweepRebuild({Cyclic(9, "0", 250, 1), Cyclic(9, "5", 2, 2)}, 1);
}
