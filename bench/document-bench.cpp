// What nlohmann::json makes of 10,000 eliminations: the steps that ReadCorvaneDemo cannot do without.
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "games/corvane/corvane-lib/src/event-handlers.h"

namespace {

constexpr int kEvents = 10'000;

// An elimination of one account by another; event-handlers.h says what lies where.
std::vector<std::uint8_t> Payload() {
    constexpr std::size_t kFirstPlayer = 76, kSecondPlayer = 94, kBytes = 117;
    constexpr std::uint8_t kAccount = 17;
    std::vector<std::uint8_t> payload(kBytes);
    for (std::size_t i = 12; i < kBytes; ++i) payload[i] = static_cast<std::uint8_t>(i * 37 % 61);
    payload[kFirstPlayer] = payload[kSecondPlayer] = kAccount;
    return payload;
}

nlohmann::json Build() {
    const std::vector<std::uint8_t> payload = Payload();
    nlohmann::json events = nlohmann::json::array();
    for (int i = 0; i < kEvents; ++i) {
        nlohmann::json event;
        orvel::corvane::ReadElimination(payload, event);
        events.push_back(std::move(event));
    }
    return events;
}

void BuildAndFree(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(Build());
}

void CopyAndFree(benchmark::State& state) {
    const nlohmann::json events = Build();
    for ([[maybe_unused]] auto _ : state) {
        nlohmann::json copy = events;
        benchmark::DoNotOptimize(copy);
    }
}

void Dump(benchmark::State& state) {
    const nlohmann::json events = Build();
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(events.dump(1, ' ', false, nlohmann::json::error_handler_t::strict));
    }
}

BENCHMARK(BuildAndFree)->Unit(benchmark::kMillisecond);
BENCHMARK(CopyAndFree)->Unit(benchmark::kMillisecond);
BENCHMARK(Dump)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
