// The filter before a renderer that draws on surfaces, as those of Windows do: it has an allocator
// of its own with one buffer, whose rows are longer than the picture, and it says so by a type on
// the buffer. It asks once whether the filter follows, and then changes surfaces as it likes.
//
//   SurfaceRig rig(Format("RGB24"));
//   rig.surfaces = {{.more = 100}, {.more = 12, .turned = true}};
//   ASSERT_EQ(rig.Begin({64, 48}, {40, 36}), S_OK);
//   EXPECT_EQ(rig.Deliver(frame), S_OK);
//   EXPECT_TRUE(Matches(NearestFrame(format, frame, {64, 48}, {40, 36}),
//   rig.pictures.at(0).bytes));
#pragma once

#include <optional>
#include <vector>

#include "tests/filter/support/filter_rig.h"
#include "tests/filter/support/pictures.h"
#include "tests/picture/support/expected_pixels.h"

namespace tavo_test {

// One that a renderer draws on.
struct Surface {
    int more;             // pixels of a row behind those of the picture
    bool turned = false;  // its type has a negative height; only where the format keeps that
};

// A picture as the renderer got it, in tight rows, the first one on top.
struct DrawnPicture {
    Size size;
    std::vector<BYTE> bytes;
    std::optional<MediaType> type;  // what its sample carried
    REFERENCE_TIME start;
    bool isClean;  // nothing but the picture was written
};

class SurfaceRig : public FilterRig {
  public:
    // `config` may have an onReceive of its own, which is called first.
    explicit SurfaceRig(const PixelFormat& format, SinkConfig config = {});

    // Drawn on in turn, one for each buffer. None: the connection's type is used all the time.
    std::vector<Surface> surfaces;
    // Accepts ReceiveConnection while running. Set before a connection.
    bool reconnects = true;

    // Connects and runs.
    HRESULT Begin(Size from, Size to);

    // Buffers are made anew with the next start.
    HRESULT Stop();

    // By the connection, or by the type that came with a sample last.
    Size PictureSize() const { return size_; }
    std::vector<DrawnPicture> pictures;

    // A type for a surface of a picture, or a plain one without `more`.
    MediaType TypeFor(Size picture, Surface surface) const;

  private:
    HRESULT Draw(IMediaSample* sample);
    void Read(const AM_MEDIA_TYPE& type);
    void AskForSurface();

    const PixelFormat& format_;
    const std::function<HRESULT(IMediaSample*)> onReceive_;
    size_t turn_ = 0;
    Size size_ = {};
    int pitch_ = 0;
    bool turned_ = false;
    BYTE* painted_ = nullptr;  // the buffer whose bytes are all the same
};

}  // namespace tavo_test
