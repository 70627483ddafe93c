// Whether the program runs under Wine, for the few workarounds that need to know.

#pragma once

namespace tavo {

bool RunsUnderWine();

}  // namespace tavo
