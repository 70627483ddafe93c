// The tests that a media type must pass. They know nothing of connections.

#pragma once

#include "streams.h"

#include "picture/picture.h"

// Whether the settings allow a type: video, a format block of the VantrelVideoType, a subtype of
// the VantrelPixelFormat.
bool PassesSettings(const CMediaType& type, int videoType, int pixelFormat);

// A format block that claims to be a video header must be one; a picture that the filter would have
// to scale must have a size and buffers that can hold it: `isUsable` says so.
bool IsWellFormed(const CMediaType& type, bool (*isUsable)(const tavo::Picture&));
