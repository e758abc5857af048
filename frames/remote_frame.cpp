#include "frames/remote_frame.h"

void Remote_ReadVar(RW_VAR*) {}

void Remote_WriteVar(RW_VAR*) {}
