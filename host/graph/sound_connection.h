// Leads the sound of a source to the sink.

#pragma once

#include <vector>

#include "host/filters/avi_sink_filter.h"
#include "streams.h"

namespace tavo {

// The pins that offer sound and are not connected, of the filters upstream of this input pin.
std::vector<ComPtr<IPin>> OpenSoundPins(IPin* input);

// Connects the first of these pins that can be connected, perhaps through decoders, with the sink's
// pin of sound. False, and the sink has no such pin, when there is none.
bool ConnectSound(IGraphBuilder& builder, const std::vector<ComPtr<IPin>>& pins, CAviSink& sink);

// Makes the splitter that feeds this pin read up to the end of its longest stream.
void ReadLongestStream(IPin* input);

}  // namespace tavo
