// SPDX-License-Identifier: MIT
#include "allocation_sweep.h"

namespace
{

class ConversionSweep : public AllocationSweep
{
protected:
    void sweepText(int area, const QString& text, Needs needs)
    {
        sweep({[] {},
               [area, text] { return PLCAddressChangeIntef(area, text); },
               -1,
               {},
               Leaves::ALL_OR_NOTHING,
               needs});
    }
};

} // namespace

TEST_F(ConversionSweep, AnAddressTextThatIsANumber)
{
    sweepText(9, QString("1234"), Needs::NONE);
}

TEST_F(ConversionSweep, AnAddressTextLongerThanAnyNumber)
{
    sweepText(9, QString(400, QLatin1Char('0')) + QLatin1String("7"), Needs::MALLOC_ONLY);
}

TEST_F(ConversionSweep, AnAddressTextOfABitInsideAWord)
{
    sweepText(8, QString("10.3"), Needs::MALLOC_ONLY);
}

TEST_F(ConversionSweep, WiringAndChecksumsNeedNoMemory)
{
    static const unsigned char bytes[] = {1, 2, 3};
    sweep({[] {},
           [this] {
               SetComInfo(&info);
               RegistCallBackFuncIntf(PLC_driver.onceReadDoneCallback, PLC_driver.listDoneCallback);
               FlashLocalRegister(nullptr, nullptr, nullptr);
               return QueryFinishFlag() + CalSUM(bytes, 3) + CalCRC(bytes, 3) + CalLRC(bytes, 3) +
                      CalXOR(bytes, 3) + DigitalToASCII(1) + ASCIIToDigital('1');
           },
           -1,
           {},
           Leaves::ALL_OR_NOTHING,
           Needs::NONE});
}
