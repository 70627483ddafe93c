// Reads the filter's figures.

#include "host/graph/filter_figures.h"

namespace tavo {

FilterFigures ReadFigures(IVantrelSettings& settings) {
    FilterFigures figures;
    settings.GetModuleTime(&figures.moduleMs);
    settings.GetSystemFps(&figures.systemFps);
    settings.GetGenerateFps(&figures.generateFps);
    settings.GetFrameRate(&figures.frameRate);
    return figures;
}

}  // namespace tavo
