// AES decryption beside OpenSSL: the time of one call with a fresh key, as every event of a replay makes it.
//
// Rows are aes-BITS/IMPLEMENTATION/BYTES. The implementations are both paths of AesDecrypt, OpenSSL with the
// key set up in each call as AesDecrypt has to, and OpenSSL with a context that already has its key. For
// OpenSSL without its own AES-NI and SSSE3 code run a second process with OPENSSL_ia32cap=~0x200020000000000.
#include <array>
#include <memory>
#include <openssl/evp.h>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "util/aes.h"

namespace {

using orvel::util::data::AesKey;
using orvel::util::data::AesPath;

constexpr std::array<std::int64_t, 7> kSizes{64, 256, 1024, 4096, 16384, 131072, 1048576};

struct Text {
    Text(std::size_t keyBytes, std::size_t size) : key(keyBytes), cipher(size), plain(size) {
        for (std::size_t i = 0; i < keyBytes; ++i) key[i] = static_cast<std::uint8_t>(i * 37 + 11);
        for (std::size_t i = 0; i < size; ++i) cipher[i] = static_cast<std::uint8_t>(i * i + i / 251);
    }
    std::vector<std::uint8_t> key, cipher, plain;
};

class OpenSsl {
  public:
    explicit OpenSsl(const Text& text) : m_context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free) {
        const EVP_CIPHER* const cipher = text.key.size() == 16   ? EVP_aes_128_ecb()
                                         : text.key.size() == 24 ? EVP_aes_192_ecb()
                                                                 : EVP_aes_256_ecb();
        m_ok = EVP_DecryptInit_ex(m_context.get(), cipher, nullptr, text.key.data(), nullptr) == 1 &&
               EVP_CIPHER_CTX_set_padding(m_context.get(), 0) == 1;
    }

    bool setKey(const Text& text) {
        return m_ok && EVP_DecryptInit_ex(m_context.get(), nullptr, nullptr, text.key.data(), nullptr) == 1;
    }

    bool decrypt(Text& text) {
        int written = 0;
        return m_ok && EVP_DecryptUpdate(m_context.get(), text.plain.data(), &written, text.cipher.data(),
                                         static_cast<int>(text.cipher.size())) == 1;
    }

  private:
    std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> m_context;
    bool m_ok;
};

bool Decrypt(AesPath path, Text& text) {
    const AesKey key(text.key.data(), text.key.size(), path);
    return AesDecrypt(text.cipher.data(), text.cipher.size(), key, text.plain.data(), text.plain.size(),
                      nullptr) == 0;
}

// Checks that decrypt(text) gives OpenSSL's result, then times it.
template <typename Function>
void Run(benchmark::State& state, Text& text, const Function& decrypt) {
    if (!OpenSsl(text).decrypt(text)) return state.SkipWithError("OpenSSL failed");
    const std::vector<std::uint8_t> expected =
        std::exchange(text.plain, std::vector<std::uint8_t>(text.cipher.size()));
    if (!decrypt(text) || text.plain != expected) return state.SkipWithError("wrong result");
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(decrypt(text));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.cipher.size()));
}

void RegisterSizes(const std::string& name, std::size_t keyBytes, auto&& makeDecrypt) {
    for (const std::int64_t size : kSizes) {
        const std::string row =
            "aes-" + std::to_string(8 * keyBytes) + '/' + name + '/' + std::to_string(size);
        benchmark::RegisterBenchmark(row.c_str(), [=](benchmark::State& state) {
            Text text(keyBytes, static_cast<std::size_t>(size));
            Run(state, text, makeDecrypt(text));
        });
    }
}

void RegisterAll() {
    for (const std::size_t keyBytes : {16u, 24u, 32u}) {
        const auto ours = [](AesPath path) {
            return [=](const Text&) { return [=](Text& text) { return Decrypt(path, text); }; };
        };
        if (orvel::util::data::AesNiAvailable()) RegisterSizes("aes-ni", keyBytes, ours(AesPath::AesNi));
        RegisterSizes("table", keyBytes, ours(AesPath::Table));
        RegisterSizes("openssl", keyBytes, [](const Text& first) {
            return [openSsl = std::make_shared<OpenSsl>(first)](Text& text) {
                return openSsl->setKey(text) && openSsl->decrypt(text);
            };
        });
        RegisterSizes("openssl-key-ready", keyBytes, [](const Text& first) {
            return
                [openSsl = std::make_shared<OpenSsl>(first)](Text& text) { return openSsl->decrypt(text); };
        });
    }
}

}  // namespace

int main(int argc, char** argv) {
    RegisterAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
