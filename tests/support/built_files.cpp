// SPDX-License-Identifier: MIT
#include "support/built_files.h"

const char* builtDriver()
{
    return PLC_DRIVER_LIBRARY;
}

const char* builtSilentNameServer()
{
    return PLC_SILENT_NAME_SERVER;
}

const char* builtPlcpanel()
{
    return PLCPANEL_PROGRAM;
}

const char* builtPlcsim()
{
    return PLCSIM_PROGRAM;
}

const char* builtPlcgateway()
{
    return PLCGATEWAY_PROGRAM;
}

const char* testsDirectory()
{
    return PLC_TESTS_DIR;
}

bool areProgramsEmulated()
{
#ifdef PLC_EMULATED
    return true;
#else
    return false;
#endif
}
