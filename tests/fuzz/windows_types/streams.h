// Stands in for the umbrella header of the base classes: media types are all that is needed here.
#pragma once

#include "dshow/media_type.h"
