// Match finding: turns raw bytes into commands, each a run of literals and a match.
#pragma once

#include <array>

#include "lz-writer/coded.h"

namespace lz {

struct Command {
    uint32_t run = 0;       // literals before the match
    uint32_t length = 0;    // of the match, at least 2
    uint32_t distance = 0;  // of the match, from 1
};

struct ParseOptions {
    unsigned chain = 96;        // candidates looked at for each position
    unsigned good_length = 96;  // a match of this length is taken without looking further
    double command_bits =
        12;  // what a match must save besides its offset; more: larger, but faster to decode
    uint32_t min_distance = 8;  // nearer matches have no single-form offset
};

// The three distances that a command can name by index. All are 8 when a chunk begins.
class RecentDistances {
  public:
    uint32_t operator[](size_t index) const { return distances_[index]; }
    // The first index that holds the distance, or 3.
    unsigned IndexOf(uint32_t distance) const {
        unsigned index = 0;
        while (index < 3 && distances_[index] != distance) ++index;
        return index;
    }
    // Moves the distance, named by `index` (3: new), to the front.
    void Use(unsigned index, uint32_t distance) {
        for (unsigned i = std::min(index, 2U); i > 0; --i) distances_[i] = distances_[i - 1];
        distances_[0] = distance;
    }

  private:
    std::array<uint32_t, 3> distances_{8, 8, 8};
};

// Hash chains over the whole input, which must outlive the parser. Chunks are parsed in order.
class Parser {
  public:
    Parser(ByteSpan raw, const ParseOptions& options);

    // Commands for the bytes from `start` to `end`. What follows the last match are literals.
    std::vector<Command> Parse(size_t start, size_t end);

  private:
    struct Match {
        size_t length = 0;
        uint32_t distance = 0;
        double gain = 0;  // bits saved against literals
    };

    Match Find(size_t position, size_t end, const RecentDistances& recent);
    void TryRecent(size_t position, size_t end, const RecentDistances& recent, Match& best) const;
    void TryChain(size_t position, size_t end, Match& best);
    void Offer(size_t position, size_t end, uint32_t distance, double cost, Match& best) const;
    void InsertUpTo(size_t position);
    uint32_t& HeadAt(size_t position);

    ByteSpan raw_;
    ParseOptions options_;
    unsigned hash_bits_;
    std::vector<uint32_t> heads_;     // by hash: last position + 1
    std::vector<uint32_t> previous_;  // by position: the one before it with the same hash, + 1
    size_t inserted_ = 0;
};

}  // namespace lz
