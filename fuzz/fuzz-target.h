// Shared by the fuzz targets: blocks of exactly the input's size, so that a read past the end is seen, and
// the failures that a reader of hostile files may have.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <stdexcept>

#include <nlohmann/json.hpp>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

// A heap block with a copy of some bytes, and not one byte more.
class ExactBlock {
  public:
    explicit ExactBlock(std::span<const std::uint8_t> bytes)
        : m_size(bytes.size()), m_bytes(new std::uint8_t[bytes.size()]) {
        std::copy(bytes.begin(), bytes.end(), m_bytes.get());
    }
    // For output; the content is unspecified.
    explicit ExactBlock(std::size_t size) : m_size(size), m_bytes(new std::uint8_t[size]) {}

    std::span<std::uint8_t> Span() { return {m_bytes.get(), m_size}; }
    std::uint8_t* data() { return m_bytes.get(); }
    std::size_t size() const { return m_size; }

  private:
    std::size_t m_size;
    std::unique_ptr<std::uint8_t[]> m_bytes;
};

// Takes a target's settings from the front of its input. Settings missing from a short input are 0.
class Settings {
  public:
    explicit Settings(std::span<const std::uint8_t> input) : m_rest(input) {}

    std::uint32_t Take(std::size_t bytes) {
        const std::size_t taken = std::min(bytes, m_rest.size());
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < taken; ++i) value |= static_cast<std::uint32_t>(m_rest[i]) << (8 * i);
        m_rest = m_rest.subspan(taken);
        return value;
    }
    std::span<const std::uint8_t> Rest() const { return m_rest; }

  private:
    std::span<const std::uint8_t> m_rest;
};

// Aborts if a promise does not hold. The fuzzer reports that as a finding.
inline void Require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}

// Runs code that reads a replay. Unreadable replays fail in two ways: std::runtime_error (ReplayException and
// stream failures among them) and the container's plain C strings. A name that is no UTF-8 makes the dump
// fail. Any other exception passes through and is a finding.
template <typename Read>
bool ReadsOrFails(Read read) {
    try {
        read();
        return true;
    } catch (const std::runtime_error&) {
    } catch (const nlohmann::json::type_error& failure) {
        constexpr int kInvalidUtf8 = 316;
        if (failure.id != kInvalidUtf8) throw;
    } catch (char* text) {
        Require(text != nullptr && *text != '\0', "a container failure has a text");
    }
    return false;
}

}  // namespace fuzz
