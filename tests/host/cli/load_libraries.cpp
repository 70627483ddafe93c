// Loads the libraries that it is given by name, as the system finds them.

#include <windows.h>

int wmain(int count, wchar_t** names) {
    for (int i = 1; i < count; ++i) LoadLibraryW(names[i]);
    return 0;
}
