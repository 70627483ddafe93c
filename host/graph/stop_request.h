// The user's request to stop the program.

#pragma once

#include <windows.h>

namespace tavo {

// Catches Ctrl-C, Ctrl-Break and the closing of the console during its life; one at a time. The
// second Ctrl-C ends the program at once.
class StopRequest {
  public:
    StopRequest();
    // Lets the console close if it is waiting for that.
    ~StopRequest();
    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;

    // Signalled when a stop is requested. Null without memory.
    HANDLE Event() const;
    bool IsSet() const;
};

}  // namespace tavo
