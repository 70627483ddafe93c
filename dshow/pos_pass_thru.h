// CreatePosPassThru: the platform's object that passes seeking on to the filter upstream.

#pragma once

#include "dshow/platform.h"

// Makes it inside pAgg (aggregated) for the input pin pPin. *ppPassThru is counted, and null on
// failure. Needs COM on the calling thread.
STDAPI CreatePosPassThru(LPUNKNOWN pAgg, BOOL bRenderer, IPin* pPin, IUnknown** ppPassThru);
