// The libraries that a user would pick instead, each in a file of its own. Which of them are there
// is settled when the build is configured.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/workloads.h"

namespace tavo::bench {

// One way in which a library does a case, on one thread, between pictures of its own. A call throws
// std::runtime_error where the library refuses.
struct Way {
    std::string setting;
    std::function<void()> run;
    // By a setting of the user's. All else that a library takes is what it finds on the processor.
    bool takesAvx512 = false;
};

struct Peer {
    const char* name;
    std::string version;
    // All sensible ways; none where the library cannot do it.
    std::vector<Way> (*waysFor)(const Case& work);
};

// Those that this build was made with.
std::vector<Peer> FoundPeers();

Peer LibyuvPeer();
Peer SwscalePeer();
Peer OpencvPeer();
Peer ZimgPeer();

}  // namespace tavo::bench
