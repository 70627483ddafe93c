// A small file with a run too long to end before it is interrupted.

#pragma once

#include <filesystem>

namespace tavo_test {

// One frame of 64 x 48 pixels in YVYU, and very many empty chunks that repeat it.
void WriteEndlessMovie(const std::filesystem::path& path);

}  // namespace tavo_test
