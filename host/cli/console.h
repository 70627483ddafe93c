// Text to the console: wide there, UTF-8 in files and pipes.

#pragma once

#include <windows.h>

#include <string_view>

namespace tavo {

void PrintOut(std::wstring_view text);
void PrintError(std::wstring_view text);

// True when standard error is a terminal, where a line can be written over.
bool ErrorIsTerminal();

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
