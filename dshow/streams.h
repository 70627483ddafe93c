// Umbrella header of the DirectShow base classes: the one header that a filter or page includes.
//
// Order, from the ground up: platform, helpers, objects, media types, enumerators, filter, pins,
// transform filter, clock, property page, module.

#pragma once

// clang-format off
#include "dshow/platform.h"
#include "dshow/helpers.h"
#include "dshow/crit_sec.h"
#include "dshow/ref_time.h"
#include "dshow/fourcc_map.h"
#include "dshow/wide_string.h"
#include "dshow/setup_types.h"
#include "dshow/base_object.h"
#include "dshow/media_type.h"
#include "dshow/enum_pins.h"
#include "dshow/enum_media_types.h"
#include "dshow/base_filter.h"
#include "dshow/base_pin.h"
#include "dshow/base_output_pin.h"
#include "dshow/base_input_pin.h"
#include "dshow/pos_pass_thru.h"
#include "dshow/transform_pins.h"
#include "dshow/transform_filter.h"
#include "dshow/advise_schedule.h"
#include "dshow/reference_clock.h"
#include "dshow/system_clock.h"
#include "dshow/property_page.h"
#include "dshow/module.h"
#include "dshow/module_registration.h"
// clang-format on
