#include "games/corvane/napi-module/process-end.h"

#include <cstdio>
#include <exception>
#include <string_view>

namespace orvel::corvane {

void EndProcess(const char* text) noexcept {
    std::fflush(stdout);
    const bool endsLine = std::string_view(text).ends_with('\n');
    std::fprintf(stderr, endsLine ? "%s" : "%s\n", text);
    std::fflush(stderr);
    std::terminate();
}

void EndProcessWithCurrentException() noexcept {
    try {
        throw;
    } catch (const std::exception& failure) {
        EndProcess(failure.what());
    } catch (const char* text) {
        EndProcess(text);
    } catch (...) {
        EndProcess("a failure of an unknown kind");
    }
}

}  // namespace orvel::corvane
