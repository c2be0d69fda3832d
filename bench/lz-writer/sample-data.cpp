// Generators of test data. Integer arithmetic only, so that 32-bit and 64-bit targets agree.
#include "lz-writer/sample-data.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <string>

namespace lz {
namespace {

constexpr uint32_t kWords = 6000;
constexpr uint32_t kFavourites = 5;

class Prose {
  public:
    explicit Prose(uint64_t seed) : random_(seed) {
        for (uint32_t i = 0; i < kWords; ++i) words_.push_back(MakeWord(i));
        for (auto& favourites : favourites_) {
            for (uint32_t& word : favourites) word = random_.Skewed(kWords);
        }
    }

    std::string Make(size_t size) {
        std::string text;
        while (text.size() < size) {
            if (random_.Below(5) == 0) {
                text += "<h2 id=\"s" + std::to_string(++section_) + "\">" + Sentence(3, 6) + "</h2>\n";
            }
            text += random_.Below(8) == 0 ? List() : Paragraph();
        }
        text.resize(size);
        return text;
    }

  private:
    std::string MakeWord(uint32_t rank) {
        static constexpr const char* kOnsets[] = {"b", "c",  "d",  "f",  "g",  "h",  "l",  "m",  "n",  "p",
                                                  "r", "s",  "t",  "v",  "w",  "st", "tr", "pl", "ch", "sh",
                                                  "",  "br", "gr", "th", "qu", "cl", "sp", "fr"};
        static constexpr const char* kVowels[] = {"a", "e", "i", "o", "u", "ea", "ou", "ai", "ee", "io"};
        static constexpr const char* kCodas[] = {"",  "",   "n",  "r",  "s",  "t",
                                                 "l", "nd", "st", "ng", "ck", "m"};
        std::string word;
        const uint32_t syllables = 1 + (rank > 1500 ? 1 : 0) + (rank > 100 ? random_.Below(2) : 0);
        for (uint32_t i = 0; i < syllables; ++i) {
            word += kOnsets[random_.Skewed(std::size(kOnsets))];
            word += kVowels[random_.Skewed(std::size(kVowels))];
            if (i + 1 == syllables || random_.Below(3) == 0) word += kCodas[random_.Below(std::size(kCodas))];
        }
        static constexpr const char* kEndings[] = {"", "", "", "ing", "ed", "er", "ly", "tion", "s", "ment"};
        return rank > 300 ? word + kEndings[random_.Below(std::size(kEndings))] : word;
    }
    const std::string& NextWord() {
        const bool follow = random_.Below(100) < 25;
        last_ = follow ? favourites_[last_][random_.Skewed(kFavourites)] : random_.Skewed(kWords);
        return words_[last_];
    }
    std::string Sentence(uint32_t least, uint32_t spread) {
        std::string sentence = NextWord();
        if (sentence[0] >= 'a') sentence[0] = static_cast<char>(sentence[0] - 'a' + 'A');
        for (uint32_t left = least + random_.Below(spread); left > 0; --left) {
            if (random_.Below(9) == 0) sentence += ',';
            sentence += ' ';
            if (random_.Below(60) == 0) {
                const std::string& word = NextWord();
                sentence += "<a href=\"/wiki/" + word + "\">" + word + "</a>";
            } else if (random_.Below(50) == 0) {
                sentence += std::to_string(1500 + random_.Skewed(9000));
            } else {
                sentence += NextWord();
            }
        }
        return sentence;
    }
    std::string Paragraph() {
        std::string paragraph = "<p>";
        for (uint32_t left = 2 + random_.Below(6); left > 0; --left) {
            paragraph += Sentence(4, 18);
            paragraph += random_.Below(12) == 0 ? "? " : ". ";
        }
        return paragraph + "</p>\n\n";
    }
    std::string List() {
        std::string list = "<ul class=\"notes\">\n";
        for (uint32_t left = 3 + random_.Below(5); left > 0; --left)
            list += "  <li>" + Sentence(2, 7) + "</li>\n";
        return list + "</ul>\n\n";
    }

    Random random_;
    std::vector<std::string> words_;
    std::array<std::array<uint32_t, kFavourites>, kWords> favourites_{};
    uint32_t last_ = 0;
    uint32_t section_ = 0;
};

void PutLittle(Bytes& out, uint64_t value, unsigned count) {
    for (unsigned i = 0; i < count; ++i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

// A tone in 16.16 fixed point: each value follows from the two before it.
struct Tone {
    int64_t factor = 0;  // 2 * cos(frequency), in 1/2^30
    int64_t now = 0;
    int64_t before = 0;
    int64_t Next() {
        const int64_t next = ((factor * now) >> 30) - before;
        before = now - (now >> 14);  // decays
        now = next;
        return now >> 16;
    }
};

Bytes MakeNoise(size_t size, uint64_t seed) {
    Random random(seed);
    Bytes out(size);
    for (uint8_t& byte : out) byte = static_cast<uint8_t>(random.Next() >> 24);
    return out;
}

}  // namespace

uint32_t Random::Skewed(uint32_t limit) {
    // Uniform number of bits, then uniform below that: density falls as 1/x.
    const uint32_t top = static_cast<uint32_t>(std::bit_width(limit));
    for (;;) {
        const uint32_t bits = Below(top + 1);
        const uint32_t value = (1U << bits) - 1 + Below(1U << bits);
        if (value < limit) return value;
    }
}

Bytes MakeText(size_t size, uint64_t seed) {
    const auto prose = std::make_unique<Prose>(seed);
    const std::string text = prose->Make(size);
    return {text.begin(), text.end()};
}

Bytes MakeRecords(size_t size, uint64_t seed) {
    Random random(seed);
    Bytes out;
    uint32_t id = 1000;
    uint64_t time = 0x18000000000;
    std::array<std::array<int32_t, 3>, 48> places{};
    while (out.size() < size) {
        const uint32_t actor = random.Skewed(48);
        id += random.Below(10) == 0 ? 2U : 1U;
        time += 5 + random.Skewed(200);
        PutLittle(out, id, 4);
        PutLittle(out, time, 8);
        PutLittle(out, 0x4000 + actor * 8, 2);
        PutLittle(out, random.Skewed(12), 1);
        PutLittle(out, random.Below(20) == 0 ? random.Below(256) : 0x81, 1);
        for (int32_t& coordinate : places[actor]) {
            coordinate += static_cast<int32_t>(random.Below(2001)) - 1000;
            const float value = static_cast<float>(coordinate) / 64;
            uint32_t bits = 0;
            std::memcpy(&bits, &value, sizeof bits);
            PutLittle(out, random.Below(3) == 0 ? bits : 0, 4);
        }
        PutLittle(out, random.Below(4) == 0 ? random.Next() : actor * 0x01010101, 4);
        PutLittle(out, 0xFFFFFFFF00000000 | random.Skewed(3000), 8);
    }
    out.resize(size);
    return out;
}

Bytes MakeSamples(size_t size, uint64_t seed) {
    Random random(seed);
    Bytes out;
    std::array<Tone, 6> tones;
    for (size_t frame = 0; out.size() < size; ++frame) {
        if (frame % 3000 == 0) {
            Tone& tone = tones[random.Below(tones.size())];
            tone.factor = (int64_t{2} << 30) - random.Skewed(30'000'000) - 400'000;
            tone.now = static_cast<int64_t>(random.Skewed(4000)) << 16;
            tone.before = tone.now;
        }
        int64_t sum = 0;
        for (Tone& tone : tones) sum += std::clamp<int64_t>(tone.Next(), -9000, 9000);
        const auto noise = [&] { return static_cast<int64_t>(random.Below(5)) - 2; };
        for (const int64_t sample : {sum + noise(), sum * 3 / 4 + noise()}) {
            PutLittle(out, static_cast<uint16_t>(std::clamp<int64_t>(sample, -32768, 32767)), 2);
        }
    }
    out.resize(size);
    return out;
}

Bytes MakeMixed(size_t size, uint64_t seed) {
    Random random(seed);
    Bytes out;
    while (out.size() < size) {
        const size_t length = 500 + random.Skewed(30000);
        const uint32_t kind = random.Below(out.empty() ? 5 : 6);
        Bytes piece;
        if (kind == 0) piece = MakeText(length, random.Next());
        if (kind == 1) piece = MakeRecords(length, random.Next());
        if (kind == 2) piece = MakeSamples(length, random.Next());
        if (kind == 3) piece = MakeNoise(length / 4, random.Next());
        if (kind == 4) piece.assign(length / 4, static_cast<uint8_t>(random.Skewed(256)));
        if (kind == 5) {
            const size_t start = random.Below(static_cast<uint32_t>(out.size()));
            piece.assign(out.begin() + static_cast<ptrdiff_t>(start),
                         out.begin() + static_cast<ptrdiff_t>(std::min(out.size(), start + length)));
        }
        out.insert(out.end(), piece.begin(), piece.end());
    }
    out.resize(size);
    return out;
}

}  // namespace lz
