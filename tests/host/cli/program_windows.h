// Windows of a running program that plays a video: finds and reads them, and acts as the user.
//
//   RunningProgram program(VantrelPath(), {L"--pages", path});
//   const HWND frame = FindFrame(program);
//   TypeInto(ControlWithin(frame, id), "320");
//   EXPECT_TRUE(WaitFor([&] { return TextWithin(frame, id) == "320"; }));

#pragma once

#include <string>
#include <string_view>

#include "host/avi/pixel_format.h"
#include "tests/host/avi/movie_files.h"
#include "tests/host/cli/run_program.h"
#include "tests/support/patience.h"

namespace tavo_test {

// Polls slowly: polling takes time from the program.
template <typename Condition>
bool WaitFor(Condition condition) {
    return WaitUntil(condition, 50);
}

// Null when the program ends before it has one.
HWND FindFrame(const RunningProgram& program);
// Puts it in a corner of the screen, where no console of another test covers it: what is covered
// cannot be looked at.
HWND FindVideo(const RunningProgram& program);

HWND ControlWithin(HWND frame, int id);
std::string TextWithin(HWND frame, int id);
double FigureWithin(HWND frame, int id);

// Replaces the text.
void TypeInto(HWND edit, std::string_view text);
void ClickOn(HWND button);

// Whether the picture in the window has that size.
bool IsVideoAs(HWND video, int width, int height);
COLORREF PixelOf(HWND video, int x, int y);
// The gray level of a picture in one dark gray, else -1.
int GrayOf(HWND video);

class PlayTest : public MovieTest {
  protected:
    // `count` frames of 160 x 120, 25 a second.
    std::wstring Movie(uint32_t count, tavo::PixelFormat format = tavo::PixelFormat::RGB24);
    // Frames of one gray each: `first`, `first` + 1 and so on.
    std::wstring GrayMovie(int count, int first, uint32_t fps);
    static void ExpectGoodEnd(const Output& run);
};

}  // namespace tavo_test
