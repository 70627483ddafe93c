// What --help prints.

#pragma once

#include <string>

namespace tavo {

std::wstring UsageText();

}  // namespace tavo
