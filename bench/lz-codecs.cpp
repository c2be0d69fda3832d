// Our decoder and its peers.
#include "lz-codecs.h"

#include <cstdlib>
#include <libdeflate.h>
#include <lz4.h>
#include <lz4hc.h>
#include <memory>
#include <zlib.h>
#include <zstd.h>

#include "lz-writer/sample-data.h"
#include "lz-writer/stream-writer.h"
#include "oodle/oodle2/core/oodlelzcompressors.h"

namespace bench {
namespace {

using Span = std::span<const std::uint8_t>;

// The stream may be 15 per cent larger than zstd-9's; this spends the difference on decoding speed. Longer
// chains of candidates would cost minutes where they no longer fit into the cache.
Bytes CompressOwn(Span raw) {
    lz::CompressOptions options;
    if (raw.size() > 1 << 20) options.parse.chain = 24;
    options.parse.command_bits = 18;
    options.parse.min_distance = 16;  // nearer matches are slower to decode
    options.store_growth = 0.15;
    return lz::Compress(raw, options).bytes;
}

// Keeps the decoder's memory from call to call, as zstd does.
bool DecodeOwn(Span compressed, std::span<std::uint8_t> raw) {
    static std::array<std::uint8_t, OodleLZ_ThreadPhased_BlockDecoderMemorySizeNeeded> memory;
    const auto size = static_cast<std::ptrdiff_t>(raw.size());
    return OodleLZ_Decompress(compressed.data(), static_cast<std::ptrdiff_t>(compressed.size()), raw.data(),
                              size, 1, 0, 0, nullptr, 0, nullptr, nullptr, memory.data(), memory.size(),
                              OodleLZ_Decode_Unthreaded) == size;
}

template <int kLevel>
Bytes CompressZstd(Span raw) {
    Bytes out(ZSTD_compressBound(raw.size()));
    out.resize(ZSTD_compress(out.data(), out.size(), raw.data(), raw.size(), kLevel));
    return out;
}

// As its documentation advises: one context for many frames.
bool DecodeZstd(Span compressed, std::span<std::uint8_t> raw) {
    static const std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context(ZSTD_createDCtx(),
                                                                              ZSTD_freeDCtx);
    return ZSTD_decompressDCtx(context.get(), raw.data(), raw.size(), compressed.data(), compressed.size()) ==
           raw.size();
}

Bytes CompressLz4(Span raw) {
    const auto size = static_cast<int>(raw.size());
    Bytes out(static_cast<std::size_t>(LZ4_compressBound(size)));
    const int written =
        LZ4_compress_HC(reinterpret_cast<const char*>(raw.data()), reinterpret_cast<char*>(out.data()), size,
                        static_cast<int>(out.size()), LZ4HC_CLEVEL_DEFAULT);
    out.resize(static_cast<std::size_t>(written));
    return out;
}

bool DecodeLz4(Span compressed, std::span<std::uint8_t> raw) {
    const auto size = static_cast<int>(raw.size());
    return LZ4_decompress_safe(reinterpret_cast<const char*>(compressed.data()),
                               reinterpret_cast<char*>(raw.data()), static_cast<int>(compressed.size()),
                               size) == size;
}

Bytes CompressZlib(Span raw) {
    const std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
        libdeflate_alloc_compressor(9), libdeflate_free_compressor);
    Bytes out(libdeflate_zlib_compress_bound(compressor.get(), raw.size()));
    out.resize(libdeflate_zlib_compress(compressor.get(), raw.data(), raw.size(), out.data(), out.size()));
    return out;
}

bool DecodeZlib(Span compressed, std::span<std::uint8_t> raw) {
    uLongf size = raw.size();
    return uncompress(raw.data(), &size, compressed.data(), compressed.size()) == Z_OK && size == raw.size();
}

bool DecodeLibdeflate(Span compressed, std::span<std::uint8_t> raw) {
    static const std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)>
        decompressor(libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    return libdeflate_zlib_decompress(decompressor.get(), compressed.data(), compressed.size(), raw.data(),
                                      raw.size(), nullptr) == LIBDEFLATE_SUCCESS;
}

}  // namespace

const std::vector<Codec>& Codecs() {
    static const std::vector<Codec> codecs = {
        {"own", "own", CompressOwn, DecodeOwn},
        {"zstd-3", "zstd-3", CompressZstd<3>, DecodeZstd},
        {"zstd-9", "zstd-9", CompressZstd<9>, DecodeZstd},
        {"zstd-19", "zstd-19", CompressZstd<19>, DecodeZstd, 8 << 20},
        {"lz4", "lz4", CompressLz4, DecodeLz4},
        {"zlib", "zlib", CompressZlib, DecodeZlib},
        {"libdeflate", "zlib", nullptr, DecodeLibdeflate},
    };
    return codecs;
}

const std::vector<DataSet>& DataSets() {
    static const std::vector<DataSet> sets = {
        {"text", [](std::size_t size) { return lz::MakeText(size); }},
        {"records", [](std::size_t size) { return lz::MakeRecords(size); }},
        {"samples", [](std::size_t size) { return lz::MakeSamples(size); }},
        {"mixed", [](std::size_t size) { return lz::MakeMixed(size); }},
    };
    return sets;
}

}  // namespace bench
