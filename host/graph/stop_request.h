// The user's wish to stop the program: Ctrl-C.

#pragma once

#include <windows.h>

namespace tavo {

// Catches Ctrl-C, Ctrl-Break and the closing of the console for as long as it lives; one at a time.
// The second Ctrl-C ends the program at once.
class StopRequest {
  public:
    StopRequest();
    // Lets a console that is being closed go on with that.
    ~StopRequest();
    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;

    // Signalled once a stop is wanted. Null when there is no memory for it.
    HANDLE Event() const;
    bool IsSet() const;
};

}  // namespace tavo
