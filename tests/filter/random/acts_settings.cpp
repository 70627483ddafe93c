// Setters with all that a caller may hand over, and applying.
#include <cmath>
#include <limits>

#include "tests/filter/random/sequence.h"
#include "tests/filter/support/mutated_types.h"

namespace tavo_test {

namespace {

void SetSize(Sequence& s) {
    // The odd sizes overflow or are tiny; none of them asks for much memory.
    int sizes[2];
    for (int& size : sizes) {
        size = s.dice.OneIn(4) ? s.dice.Of({0, 1, -1, 3, -40, 65535, INT_MAX, INT_MIN})
                               : 2 * (s.dice.Below(40) + 1);
    }
    s.Call("SetOutputSize", {1}, [&] {
        s.expected.width = sizes[0];
        s.expected.height = sizes[1];
        return s.settings->SetOutputSize(sizes[0], sizes[1]);
    });
}

void SetMethod(Sequence& s) {
    const int method = s.dice.OneIn(8) ? static_cast<int>(s.dice.random()) : s.dice.Below(14) - 1;
    s.Call("SetScaleMethod", {1}, [&] {
        s.expected.method = method;
        return s.settings->SetScaleMethod(method);
    });
}

void SetFormat(Sequence& s) {
    const int format = s.dice.OneIn(3) ? s.dice.Below(13) - 1 : 0;
    s.Call("SetOutputFormat", {1}, [&] {
        s.expected.format = format;
        return s.settings->SetOutputFormat(format);
    });
}

void SetType(Sequence& s) {
    const int type = s.dice.OneIn(3) ? s.dice.Below(5) - 1 : 0;
    s.Call("SetVideoType", {1}, [&] {
        s.expected.type = type;
        return s.settings->SetVideoType(type);
    });
}

void SetRate(Sequence& s) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double rate = s.dice.Of({0.0,
                                   -0.0,
                                   -5.0,
                                   0.009,
                                   0.01,
                                   1.0,
                                   12.5,
                                   24.0,
                                   25.0,
                                   29.97,
                                   30.0,
                                   50.0,
                                   60.0,
                                   100.0,
                                   1e3,
                                   1e5,
                                   1e7,
                                   1.1e7,
                                   1e300,
                                   kInfinity,
                                   -kInfinity,
                                   std::nan(""),
                                   std::numeric_limits<double>::denorm_min()});
    s.Call("SetFrameRate", {1}, [&] {
        s.expected.frameRate = rate >= 0.01 && rate <= 1e7 ? rate : 0.0;
        return s.settings->SetFrameRate(rate);
    });
}

void Apply(Sequence& s) {
    s.graph.reconnects =
        static_cast<Reconnects>(s.dice.Below(static_cast<int>(Reconnects::kCount)));
    ComPtr<IPin> peer;
    // Two that agree about it: a sink that runs while the filter is stopped can be parted, and not
    // connected again.
    const bool wasConnected = s.output->ConnectedTo(peer.Put()) == S_OK &&
                              s.sink->pin().connected() && s.sink->state() == s.expected.state;
    const HRESULT result = s.Call(
        "ApplySettings", {1, 0, E_INVALIDARG}, [&] { return s.settings->ApplySettings(); },
        kMaySettleSize);
    const bool graphParts = s.expected.graph && s.graph.reconnects == Reconnects::OnlyParts;
    if (result != 1 && wasConnected && !graphParts && !s.WasRefused() && !s.PeersFail()) {
        s.Check(s.output->ConnectedTo(peer.Put()) == S_OK,
                "a change that is refused leaves the connection");
    }
}

constexpr Act kActs[] = {{"size", 6, SetSize}, {"method", 4, SetMethod}, {"format", 3, SetFormat},
                         {"type", 3, SetType}, {"rate", 5, SetRate},     {"apply", 6, Apply}};

}  // namespace

std::span<const Act> SettingsActs() { return kActs; }

}  // namespace tavo_test
