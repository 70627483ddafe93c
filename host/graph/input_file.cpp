// Checks the input before a graph is built.

#include "host/graph/input_file.h"

#include <filesystem>

#include "host/avi/media_text.h"
#include "host/graph/error_text.h"
#include "host/graph/wine.h"

namespace tavo {
namespace {

std::wstring CheckFile(const InputFile& input, FileStore& file) {
    const std::filesystem::path path = input.path;
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) return input.Name() + L" does not exist";
    if (std::filesystem::is_directory(path, ignored)) return input.Name() + L" is a folder";
    const IoResult readable = file.OpenForReading(path);
    if (readable != IoResult::Ok) {
        return input.Name() + L" cannot be opened: " + IoText(readable);
    }
    return file.Size() == 0 ? input.Name() + L" is empty" : L"";
}

}  // namespace

std::wstring OpenInput(const std::wstring& path, InputFile& input) {
    input.path = path;
    auto movie = std::make_shared<RawMovie>();
    std::wstring error = CheckFile(input, movie->file);
    if (!error.empty()) return error;
    input.facts = ProbeMedia(movie->file);
    error = WhyNoVideo(input.Name(), input.facts);
    if (!error.empty()) return error;
    // Windows has filters that read scripts, Wine has none.
    if (input.facts.kind == MediaKind::Text && RunsUnderWine()) return WhyNotDecodedHere(input);
    if (movie->reader.Open(movie->file) == AviResult::Ok) input.movie = std::move(movie);
    return {};
}

std::wstring WhyNotDecodedHere(const InputFile& input) {
    constexpr Platform kWine = sizeof(void*) == 4 ? Platform::Wine32 : Platform::Wine64;
    return WhyNotDecoded(input.Name(), input.facts, RunsUnderWine() ? kWine : Platform::Windows);
}

}  // namespace tavo
