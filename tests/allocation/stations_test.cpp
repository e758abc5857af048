// SPDX-License-Identifier: MIT
#include "allocation_sweep.h"

namespace
{

class StationSweep : public AllocationSweep
{
protected:
    void sweepSwitch(const std::function<void()>& prepare, int station, int flag, Needs needs)
    {
        sweep({prepare,
               [station, flag] {
                   EnCommStation(station, flag);
                   return 0;
               },
               0,
               {},
               Leaves::ALL_OR_NOTHING,
               needs});
    }

    static void switchOffTwo()
    {
        EnCommStation(1, 0);
        EnCommStation(2, 0);
    }
};

} // namespace

TEST_F(StationSweep, SwitchingTheFirstStationOff)
{
    sweepSwitch([] { queueReadOf(1, 3); }, 1, 0, Needs::NODES);
}

TEST_F(StationSweep, SwitchingAThirdStationOff)
{
    sweepSwitch(switchOffTwo, 3, 0, Needs::MALLOC_ONLY);
}

TEST_F(StationSweep, SwitchingAStationOn)
{
    sweepSwitch(switchOffTwo, 1, 1, Needs::NONE);
}

TEST_F(StationSweep, SwitchingAllStationsOn)
{
    sweepSwitch(switchOffTwo, -1, 1, Needs::NONE);
}
