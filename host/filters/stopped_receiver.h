// A graph stops its filters from the renderer up: for a moment a receiver takes no frame and gives
// no buffer while what feeds it still runs. Nothing went wrong then, and nobody waits for the end.

#pragma once

#include <windows.h>

#include <vfwmsgs.h>

namespace tavo {

// From the result of a delivery.
inline bool ReceiverHasStopped(HRESULT hr) {
    return hr == VFW_E_WRONG_STATE || hr == VFW_E_NOT_COMMITTED;
}

}  // namespace tavo
