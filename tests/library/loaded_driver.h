// SPDX-License-Identifier: MIT
/// \file
/// \brief The driver as a runtime has it: a library loaded by path, its exports looked up by name.
///
/// These tests must not include any other header of the driver than the public one, nor link its objects.
#ifndef TESTS_LIBRARY_LOADED_DRIVER_H
#define TESTS_LIBRARY_LOADED_DRIVER_H

#include "driver/plcdriver.h"
#include "support/built_files.h"
#include "support/hex.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <string>
#include <vector>

using test::fromHex;
using test::toHex;

inline RW_VAR Variable(int area, int address, int count, int station = 1)
{
    RW_VAR var = RW_VAR();
    var.area = area;
    var.address = address;
    var.count = count;
    var.station = station;
    return var;
}

/// Every export, under its own name. Loads on construction; check loaded() before the first use.
class LoadedDriver
{
public:
    LoadedDriver() : m_handle(dlopen(builtDriver(), RTLD_NOW | RTLD_LOCAL))
    {
        if (!m_handle)
            m_missing = dlerror();
        Find(SetComInfo, "SetComInfo");
        Find(RegistCallBackFuncIntf, "RegistCallBackFuncIntf");
        Find(FlashLocalRegister, "FlashLocalRegister");
        Find(QueryFinishFlag, "QueryFinishFlag");
        Find(ComCommunication, "ComCommunication");
        Find(DataCom, "DataCom");
        Find(PLCAddressChangeIntef, "PLCAddressChangeIntef");
        Find(AddListReadVar, "AddListReadVar");
        Find(AddListWriteVar, "AddListWriteVar");
        Find(AddListOnceReadVar, "AddListOnceReadVar");
        Find(ReCreatReadVarList, "ReCreatReadVarList");
        Find(EnCommStation, "EnCommStation");
        Find(SetRegisterData, "SetRegisterData");
        Find(GetRegisterData, "GetRegisterData");
        Find(CalSUM, "CalSUM");
        Find(CalCRC, "CalCRC");
        Find(CalLRC, "CalLRC");
        Find(CalXOR, "CalXOR");
        Find(DigitalToASCII, "DigitalToASCII");
        Find(ASCIIToDigital, "ASCIIToDigital");
        Find(LB, "LB");
        Find(LW, "LW");
        Find(RWI, "RWI");
    }
    ~LoadedDriver() { unload(); }
    LoadedDriver(const LoadedDriver&) = delete;
    LoadedDriver& operator=(const LoadedDriver&) = delete;

    ::testing::AssertionResult loaded() const
    {
        return m_missing.empty() ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << m_missing;
    }

    void unload()
    {
        if (m_handle)
            dlclose(m_handle);
        m_handle = nullptr;
    }

    decltype(&::SetComInfo) SetComInfo;
    decltype(&::RegistCallBackFuncIntf) RegistCallBackFuncIntf;
    decltype(&::FlashLocalRegister) FlashLocalRegister;
    decltype(&::QueryFinishFlag) QueryFinishFlag;
    decltype(&::ComCommunication) ComCommunication;
    decltype(&::DataCom) DataCom;
    decltype(&::PLCAddressChangeIntef) PLCAddressChangeIntef;
    decltype(&::AddListReadVar) AddListReadVar;
    decltype(&::AddListWriteVar) AddListWriteVar;
    decltype(&::AddListOnceReadVar) AddListOnceReadVar;
    decltype(&::ReCreatReadVarList) ReCreatReadVarList;
    decltype(&::EnCommStation) EnCommStation;
    decltype(&::SetRegisterData) SetRegisterData;
    decltype(&::GetRegisterData) GetRegisterData;
    decltype(&::CalSUM) CalSUM;
    decltype(&::CalCRC) CalCRC;
    decltype(&::CalLRC) CalLRC;
    decltype(&::CalXOR) CalXOR;
    decltype(&::DigitalToASCII) DigitalToASCII;
    decltype(&::ASCIIToDigital) ASCIIToDigital;
    void** LB;
    void** LW;
    void** RWI;

private:
    template <typename Pointer>
    void Find(Pointer& pointer, const char* name)
    {
        pointer = m_handle ? reinterpret_cast<Pointer>(dlsym(m_handle, name)) : nullptr;
        if (m_handle && !pointer)
            m_missing += std::string(name) + " is not exported; ";
    }

    void* m_handle;
    std::string m_missing;
};

/// A freshly loaded driver for each test, wired to a settings block and two counting callbacks.
class LibraryTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(driver.loaded());
        info.maxBlockCount = 100;
        info.defaultStation = 1;
        info.retryLimit = 1;
        info.hostWriteMode = 2;
        info.portId = 7;
        reports().clear();
        announced().clear();
        driver.SetComInfo(&info);
        driver.RegistCallBackFuncIntf(NoteReport, NoteList);
    }

    /// What onceReadDone was called with: port, key, second key, status.
    static std::vector<std::vector<int>>& reports()
    {
        static std::vector<std::vector<int>> calls;
        return calls;
    }

    /// The keys that listDone was called with.
    static std::vector<int>& announced()
    {
        static std::vector<int> keys;
        return keys;
    }

    std::string poll()
    {
        const Protocol* next = driver.ComCommunication();
        return next ? toHex(next->frame) : "nothing";
    }

    int reply(const char* hex)
    {
        QByteArray bytes = fromHex(hex);
        return driver.DataCom(&bytes, bytes.size())->result;
    }

    int set(int area, QString text, QByteArray data, int count, int key = 0, int station = 1)
    {
        QString name("value");
        return driver.SetRegisterData(&name, area, &text, static_cast<unsigned>(station), &data, count, key,
                                      0);
    }

    /// \return the value bytes in hexadecimal, "refused" when the text names no element
    std::string get(int area, QString text, int count, int station = 1)
    {
        QByteArray out;
        return driver.GetRegisterData(0, area, &text, station, &out, count) ? toHex(out) : "refused";
    }

    LoadedDriver driver;
    COMINFO info = COMINFO();

private:
    static int NoteReport(int portId, int hostKey, int hostSubKey, int status)
    {
        reports().push_back({portId, hostKey, hostSubKey, status});
        return 0;
    }

    static int NoteList(QList<RW_VAR>*, int hostKey, int)
    {
        announced().push_back(hostKey);
        return 0;
    }
};

#endif
