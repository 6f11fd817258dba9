#pragma once

// Pairs of one operation of ours and the same work done by a peer.

#include <functional>
#include <string>

namespace bench {

/// Both sides do all of their work in a call and keep their last result.
struct Pair {
    std::string operation, page, peerName;
    double pixels = 0;  ///< of the page, whatever is made of them
    std::function<void()> ours, peer;
    /// Whether both last results are the same pixels. Empty where the peer's rule is another one: that is said.
    std::function<bool()> same;
    double peerSeconds = 0;  ///< where a bound takes the place of a peer
};

/// Puts a pair into the run. Nothing is computed yet.
void addPair(Pair pair);

/// Takes the options of the benchmark library. False, said on the standard error stream, when it knows one of them not.
bool takeOptions(int argc, char** argv);

/// Runs what was added and prints it. False when results differ that should not.
bool runPairs();

}  // namespace bench
