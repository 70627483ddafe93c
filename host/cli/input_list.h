// The inputs of a run with several, and the names of their outputs.

#pragma once

#include <string>
#include <vector>

namespace tavo {

struct InputList {
    std::vector<std::wstring> inputs;
    std::vector<std::wstring> outputs;  // one for each
};

// Finds the files that names with wildcards stand for: in the order of their names, without folders
// and hidden files. The output of a/clip.mp4 is clip.avi in the folder. Changes no file.
//
// Empty on success, else one line for the user: nothing is found, two outputs would have the same
// name, or an output is one of the inputs. May throw std::bad_alloc.
std::wstring ListInputs(const std::vector<std::wstring>& names, const std::wstring& folder,
                        InputList& list);

}  // namespace tavo
