// The table of chunks of a replay file, which runs from the end of the information block to the end of the
// file.
//
//     ChunkType    uint32   0 header, 1 and 2 network data and checkpoints, 3 event, 0xFFFFFFFF cleared
//     SizeInBytes  int32    of the payload
//     payload
//
// The payload of an event chunk begins with the event's description:
//
//     Id           string
//     Group        string
//     Metadata     string
//     Time1        uint32
//     Time2        uint32
//     SizeInBytes  int32    of the event's data, which follows
#pragma once

#include "games/corvane/corvane-lib/src/ue4/replay-info.h"
#include "games/corvane/corvane-lib/src/ue4/util/ue4-binary-streams.h"

namespace ue4 {

// Adds every chunk from the archive's current position on to info, which must know the file's size. Payloads
// other than event descriptions are passed over, not read.
//
// The table ends where the file does, be it in the middle of a chunk (the game is still writing it), and at
// the first chunk that cannot belong to a table written in file order: one with a negative size, one that
// cannot be sought past, or an event with which all events together are larger than the file by more than a
// mebibyte.
//
// Throws a char* of static duration for a second header chunk, for event data that does not lie within the
// file, and if the stream fails without throwing.
void ReadChunkTable(FStreamReader& archive, ReplayFileInfo& info);

// Throws a failure of the container: the text as a char*, which is how all of them travel.
[[noreturn]] void ThrowContainerFailure(const char* staticText);

}  // namespace ue4
