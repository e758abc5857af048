/// \file
/// \brief Builds remote frames, which replace Modbus TCP while COMINFO::remoteMode is set.
#ifndef FRAMES_REMOTE_FRAME_H
#define FRAMES_REMOTE_FRAME_H

struct RW_VAR;

/// Not built yet: queues nothing.
void Remote_ReadVar(RW_VAR* request);

/// Not built yet: queues nothing.
void Remote_WriteVar(RW_VAR* request);

#endif
