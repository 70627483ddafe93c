// Wine in place of Windows: for the few places where it falls short and there is a way round.

#ifndef TAVO_HOST_WINE_H
#define TAVO_HOST_WINE_H

namespace tavo {

bool RunsUnderWine();

}  // namespace tavo

#endif
