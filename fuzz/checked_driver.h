// SPDX-License-Identifier: MIT
/// \file
/// \brief The driver with a check of everything that a runtime relies on after each call.
#ifndef FUZZ_CHECKED_DRIVER_H
#define FUZZ_CHECKED_DRIVER_H

#include "driver/modbus_rtu_master.h"
#include "fuzz/memory_model.h"

#include <functional>

namespace fuzz
{

/// The driver as if freshly loaded, wired to settings of its own. Every function calls the entry point that
/// it is named after and ends the program when the driver broke a promise. One object at a time; one thread.
class CheckedDriver
{
public:
    /// \param careful compare the whole image after each call that may change it, not at the end alone: slow,
    ///        but says which call it was
    CheckedDriver(const COMINFO& settings, bool careful);
    ~CheckedDriver();
    CheckedDriver(const CheckedDriver&) = delete;
    CheckedDriver& operator=(const CheckedDriver&) = delete;

    /// Compares the whole memory, to be called at the end.
    void finish() const { m_memory.compare(true); }

    /// May be changed between calls, like a runtime does.
    COMINFO& settings() { return m_settings; }

    void wire(bool on);
    void registerCallbacks(bool onceRead, bool listDone);

    /// \return the frame to send
    const Protocol* poll();
    /// \param reply may be null
    void reply(QByteArray* reply, int length);
    void addRead(RW_VAR* var);
    void addWrite(RW_VAR* var, int direct);
    void addOnceRead(RW_VAR* var, int direct);
    void rebuild(QList<HOST_VAR>* list);
    void switchStation(int station, int flag);
    void setRegister(const RW_VAR& var);
    void getRegister(const RW_VAR& var);
    /// Calls every entry point with null where it takes a pointer.
    void callWithNulls();

private:
    void call(const std::function<void()>& work);
    void callAside(const std::function<void()>& work);
    bool isWired() const { return PLC_driver.comInfo != nullptr; }
    bool isMulti() const { return m_settings.multiStation != 0; }
    void rememberPending();
    void checkPending() const;
    void checkQueued(int result, const RW_VAR& var, int before);
    void mirrorBuiltWrite();
    void mirrorQueued(const RW_VAR& var, int elements);

    COMINFO m_settings;
    const bool m_careful;
    MemoryModel m_memory;
    const Protocol* m_pending = nullptr; // handed out and not answered
    Protocol m_pendingCopy;
};

} // namespace fuzz

#endif
