#include "host/cli/report.h"

#include "host/cli/console.h"

namespace tavo {

int ReportError(const std::wstring& error, int code) {
    PrintError(L"vantrel: " + error + L"\n");
    return code;
}

}  // namespace tavo
