#pragma once
// Keys in scene files.

#include "core/key_track.h"
#include "sdk/iosave.h"

namespace host {

/// Writes the class of keys, the constant, the keys, the edited range and what is beyond it, a chunk each.
template <class T>
IOResult SaveTrack(ISave* save, const KeyTrack<T>& track, bool bezier);
/// Reads them back; unknown chunks are passed over. IO_ERROR for sizes or values that SaveTrack does not write.
template <class T>
IOResult LoadTrack(ILoad* load, KeyTrack<T>& track, bool& bezier);

} // namespace host
