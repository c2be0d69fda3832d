// Hash chains with lazy matching. What a match is worth is estimated in bits: what its bytes would cost as
// literals in this chunk less what its command and offset cost.
#include "support/lz/parser.h"

#include <cmath>
#include <cstring>

#include "support/lz/symbol-runs.h"

namespace lz {
namespace {

constexpr unsigned kMinHashBits = 10;
constexpr unsigned kMaxHashBits = 19;
constexpr double kOffsetBits = 4.5;  // of an offset's code, besides its raw bits
constexpr size_t kShortLimit = 16;   // the longest match without an excess
constexpr size_t kLongMargin = 8;    // a longer one ends so far before the chunk's end
constexpr double kLazyGain = 1.5;    // bits that a match one byte later must save more

unsigned HashBits(size_t size) {
    return std::clamp(static_cast<unsigned>(std::bit_width(size)), kMinHashBits, kMaxHashBits);
}

size_t CommonLength(const uint8_t* a, const uint8_t* b, size_t limit) {
    size_t length = 0;
    while (length < limit && a[length] == b[length]) ++length;
    return length;
}

// Bits of a literal in a chunk of these bytes, by its entropy.
double LiteralBits(ByteSpan chunk) {
    return std::max(1.0, EntropyBits(chunk) / static_cast<double>(chunk.size()));
}

// The longest match not above `length` that the rules on the chunk's end allow, with `left` bytes to that
// end.
size_t AllowedLength(size_t length, size_t left) {
    if (length <= kShortLimit) return length;
    return std::max(kShortLimit, std::min(length, left - std::min(left, kLongMargin)));
}

}  // namespace

Parser::Parser(ByteSpan raw, const ParseOptions& options)
    : raw_(raw),
      options_(options),
      hash_bits_(HashBits(raw.size())),
      heads_(size_t{1} << hash_bits_),
      previous_(raw.size()) {}

uint32_t& Parser::HeadAt(size_t position) {
    uint32_t word = 0;
    std::memcpy(&word, raw_.data() + position, sizeof word);
    return heads_[(word * 2654435761U) >> (32 - hash_bits_)];
}

void Parser::InsertUpTo(size_t position) {
    for (; inserted_ < position && inserted_ + 4 <= raw_.size(); ++inserted_) {
        uint32_t& head = HeadAt(inserted_);
        previous_[inserted_] = head;
        head = static_cast<uint32_t>(inserted_ + 1);
    }
}

void Parser::Offer(size_t position, Bounds bounds, uint32_t distance, double cost, Match& best) const {
    const uint8_t* here = raw_.data() + position;
    const size_t left = bounds.end - position;
    const size_t length = AllowedLength(CommonLength(here - distance, here, left), left);
    const double gain = static_cast<double>(length) * literal_bits_ - cost;
    if (length >= 2 && gain > best.gain) best = {length, distance, gain};
}

void Parser::TryRecent(size_t position, Bounds bounds, const RecentDistances& recent, Match& best) const {
    for (size_t i = 0; i < 3; ++i) {
        if (recent[i] <= position - bounds.floor) {
            Offer(position, bounds, recent[i], options_.command_bits + static_cast<double>(i), best);
        }
    }
}

void Parser::TryChain(size_t position, Bounds bounds, Match& best) {
    if (position + 4 > raw_.size()) return;
    uint32_t link = HeadAt(position);
    for (unsigned i = 0; link != 0 && i < options_.chain; ++i, link = previous_[link - 1]) {
        const size_t candidate = link - 1;
        if (candidate < bounds.floor) return;
        const auto distance = static_cast<uint32_t>(position - candidate);
        if (distance < options_.min_distance) continue;
        const bool longer = position + best.length < bounds.end &&
                            raw_[candidate + best.length] == raw_[position + best.length];
        if (!longer) continue;  // and farther than all before it
        Offer(position, bounds, distance, options_.command_bits + kOffsetBits + std::log2(distance), best);
        if (best.length >= options_.good_length) return;
    }
}

Parser::Match Parser::Find(size_t position, Bounds bounds, const RecentDistances& recent) {
    InsertUpTo(position);
    Match best;
    if (position >= bounds.end) return best;
    TryRecent(position, bounds, recent, best);
    TryChain(position, bounds, best);
    return best;
}

std::vector<Command> Parser::Parse(size_t start, size_t end, size_t floor) {
    const Bounds bounds{end, floor};
    literal_bits_ = LiteralBits(raw_.subspan(start, end - start));
    std::vector<Command> commands;
    RecentDistances recent;
    size_t literals = start;
    for (size_t position = start; position < end;) {
        Match match = Find(position, bounds, recent);
        if (match.length == 0) {
            ++position;
            continue;
        }
        while (match.length < options_.good_length) {
            const Match next = Find(position + 1, bounds, recent);
            const Match after =
                next.gain > match.gain + kLazyGain ? Match{} : Find(position + 2, bounds, recent);
            if (next.gain > match.gain + kLazyGain) {
                match = next;
                position += 1;
            } else if (after.gain > match.gain + 2 * kLazyGain) {
                match = after;
                position += 2;
            } else {
                break;
            }
        }
        commands.push_back({static_cast<uint32_t>(position - literals), static_cast<uint32_t>(match.length),
                            match.distance});
        recent.Use(recent.IndexOf(match.distance), match.distance);
        position += match.length;
        literals = position;
    }
    return commands;
}

}  // namespace lz
