// Seeking state of the test source: positions are stored, nothing moves.
#include "tests/support/source_seeking.h"

namespace tavo_test {
namespace {

constexpr DWORD kCapabilities = AM_SEEKING_CanSeekAbsolute | AM_SEEKING_CanGetCurrentPos |
                                AM_SEEKING_CanGetStopPos | AM_SEEKING_CanGetDuration;

template <typename T>
HRESULT Give(T* target, T value) {
    if (!target) return E_POINTER;
    *target = value;
    return S_OK;
}

// TIME_FORMAT_MEDIA_TIME; the name clashes with a macro of other headers.
constexpr GUID kMediaTime = {
    0x7B785574, 0x8C82, 0x11CF, {0xBC, 0x0C, 0x00, 0xAA, 0x00, 0xAC, 0x74, 0xF6}};

}  // namespace

STDMETHODIMP SourceSeeking::GetCapabilities(DWORD* capabilities) {
    return Give(capabilities, kCapabilities);
}

STDMETHODIMP SourceSeeking::CheckCapabilities(DWORD* capabilities) {
    if (!capabilities) return E_POINTER;
    const DWORD asked = *capabilities;
    *capabilities &= kCapabilities;
    if (*capabilities == asked) return S_OK;
    return *capabilities ? S_FALSE : E_FAIL;
}

STDMETHODIMP SourceSeeking::IsFormatSupported(const GUID* format) {
    if (!format) return E_POINTER;
    return *format == kMediaTime ? S_OK : S_FALSE;
}

STDMETHODIMP SourceSeeking::QueryPreferredFormat(GUID* format) { return Give(format, kMediaTime); }

STDMETHODIMP SourceSeeking::GetTimeFormat(GUID* format) { return Give(format, kMediaTime); }

STDMETHODIMP SourceSeeking::IsUsingTimeFormat(const GUID* format) {
    return IsFormatSupported(format);
}

STDMETHODIMP SourceSeeking::SetTimeFormat(const GUID* format) {
    return IsFormatSupported(format) == S_OK ? S_OK : E_INVALIDARG;
}

STDMETHODIMP SourceSeeking::GetDuration(LONGLONG* duration) {
    if (const auto injected = pin_.calls().Enter("GetDuration")) return *injected;
    return Give(duration, kSourceDuration);
}

STDMETHODIMP SourceSeeking::GetStopPosition(LONGLONG* stop) { return Give(stop, stop_); }

STDMETHODIMP SourceSeeking::GetCurrentPosition(LONGLONG* current) {
    return Give(current, current_);
}

STDMETHODIMP SourceSeeking::SetPositions(LONGLONG* current, DWORD currentFlags, LONGLONG* stop,
                                         DWORD stopFlags) {
    if (const auto injected = pin_.calls().Enter("SetPositions")) return *injected;
    const auto move = [](LONGLONG& position, const LONGLONG* value, DWORD flags) {
        const DWORD kind = flags & AM_SEEKING_PositioningBitsMask;
        if (!value) return;
        if (kind == AM_SEEKING_AbsolutePositioning) position = *value;
        if (kind == AM_SEEKING_RelativePositioning) position += *value;
    };
    move(current_, current, currentFlags);
    move(stop_, stop, stopFlags);
    return S_OK;
}

STDMETHODIMP SourceSeeking::GetPositions(LONGLONG* current, LONGLONG* stop) {
    if (current) *current = current_;
    if (stop) *stop = stop_;
    return S_OK;
}

STDMETHODIMP SourceSeeking::GetAvailable(LONGLONG* earliest, LONGLONG* latest) {
    if (earliest) *earliest = 0;
    if (latest) *latest = kSourceDuration;
    return S_OK;
}

STDMETHODIMP SourceSeeking::SetRate(double rate) {
    rate_ = rate;
    return S_OK;
}

STDMETHODIMP SourceSeeking::GetRate(double* rate) { return Give(rate, rate_); }

STDMETHODIMP SourceSeeking::GetPreroll(LONGLONG* preroll) { return Give(preroll, LONGLONG{0}); }

}  // namespace tavo_test
