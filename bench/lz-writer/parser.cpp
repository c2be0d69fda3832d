// Hash chains with lazy matching. The worth of a match is estimated in bits: the cost of its bytes as
// literals, less the cost of its command and offset.
#include "lz-writer/parser.h"

#include <cmath>
#include <cstring>

namespace lz {
namespace {

constexpr unsigned kMinHashBits = 10;
constexpr unsigned kMaxHashBits = 19;
constexpr size_t kHashBytes = 5;            // a match of 4 hardly pays for a new offset
constexpr double kLiteralBits = 8;          // coded it has fewer, but takes time to decode
constexpr double kOffsetBits = 4.5;         // of an offset's code, besides its raw bits
constexpr uint32_t kFarDistance = 1 << 20;  // from here on sources are not in the second cache,
constexpr double kFarBits = 20;             // so a match is worth this many bits less
constexpr size_t kShortLimit = 16;          // the longest match without an excess
constexpr size_t kLongMargin = 8;           // a longer one ends this far before the chunk's end
constexpr double kLazyGain = 1.5;           // bits that a later match must save more, per byte

unsigned HashBits(size_t size) {
    return std::clamp(static_cast<unsigned>(std::bit_width(size)), kMinHashBits, kMaxHashBits);
}

size_t CommonLength(const uint8_t* a, const uint8_t* b, size_t limit) {
    size_t length = 0;
    while (length < limit && a[length] == b[length]) ++length;
    return length;
}

// The longest match up to `length` that the rules for the chunk's end allow; `left` bytes remain to that end.
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
    uint64_t word = 0;
    std::memcpy(&word, raw_.data() + position, kHashBytes);
    return heads_[static_cast<size_t>((word * 0x9E3779B97F4A7C15) >> (64 - hash_bits_))];
}

void Parser::InsertUpTo(size_t position) {
    for (; inserted_ < position && inserted_ + kHashBytes <= raw_.size(); ++inserted_) {
        uint32_t& head = HeadAt(inserted_);
        previous_[inserted_] = head;
        head = static_cast<uint32_t>(inserted_ + 1);
    }
}

void Parser::Offer(size_t position, size_t end, uint32_t distance, double cost, Match& best) const {
    const uint8_t* here = raw_.data() + position;
    const size_t left = end - position;
    const size_t length = AllowedLength(CommonLength(here - distance, here, left), left);
    const double gain = static_cast<double>(length) * kLiteralBits - cost;
    if (length >= 2 && gain > best.gain) best = {length, distance, gain};
}

void Parser::TryRecent(size_t position, size_t end, const RecentDistances& recent, Match& best) const {
    for (size_t i = 0; i < 3; ++i) {
        if (recent[i] > position) continue;
        Offer(position, end, recent[i], options_.command_bits + static_cast<double>(i), best);
    }
}

void Parser::TryChain(size_t position, size_t end, Match& best) {
    if (position + kHashBytes > raw_.size()) return;
    uint32_t link = HeadAt(position);
    for (unsigned i = 0; link != 0 && i < options_.chain; ++i, link = previous_[link - 1]) {
        const size_t candidate = link - 1;
        const auto distance = static_cast<uint32_t>(position - candidate);
        if (distance < options_.min_distance) continue;
        const bool longer =
            position + best.length < end && raw_[candidate + best.length] == raw_[position + best.length];
        if (!longer) continue;  // and farther than all before it
        const double cost = options_.command_bits + kOffsetBits + std::log2(distance) +
                            (distance > kFarDistance ? kFarBits : 0);
        Offer(position, end, distance, cost, best);
        if (best.length >= options_.good_length) return;
    }
}

Parser::Match Parser::Find(size_t position, size_t end, const RecentDistances& recent) {
    InsertUpTo(position);
    Match best;
    if (position >= end) return best;
    TryRecent(position, end, recent, best);
    TryChain(position, end, best);
    return best;
}

std::vector<Command> Parser::Parse(size_t start, size_t end) {
    std::vector<Command> commands;
    RecentDistances recent;
    size_t literals = start;
    for (size_t position = start; position < end;) {
        Match match = Find(position, end, recent);
        if (match.length == 0) {
            ++position;
            continue;
        }
        for (size_t ahead = 1; ahead <= 2 && match.length < options_.good_length; ++ahead) {
            const Match later = Find(position + ahead, end, recent);
            if (later.gain <= match.gain + kLazyGain * static_cast<double>(ahead)) continue;
            match = later;
            position += ahead;
            ahead = 0;
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
