// The exit codes of vantrel.

#pragma once

namespace tavo {

enum ExitCode { kDone = 0, kFailed = 1, kWrongCommandLine = 2, kStopped = 3 };

}  // namespace tavo
