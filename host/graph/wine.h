// Wine in place of Windows: for the few places where it falls short and there is a way round.

#pragma once

namespace tavo {

bool RunsUnderWine();

}  // namespace tavo
