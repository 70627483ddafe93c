// A graph stops its filters from the renderer upstream. Until all are stopped, a receiver refuses
// samples and buffers while its source still runs. That is no error.

#pragma once

#include <windows.h>

#include <vfwmsgs.h>

namespace tavo {

// `hr` is the result of a delivery.
inline bool ReceiverHasStopped(HRESULT hr) {
    return hr == VFW_E_WRONG_STATE || hr == VFW_E_NOT_COMMITTED;
}

}  // namespace tavo
