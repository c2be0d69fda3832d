// One wording for stream failures: the standard libraries each have their own text for a stream exception,
// and what the add-on reports must not depend on which of them it was built with.
#pragma once

#include <ios>
#include <utility>

namespace orvel::util {

// "ios_base::badbit set" or "ios_base::failbit set", whichever the state's worst flag is. The text is static.
inline const char* StreamFailureText(std::ios_base::iostate state) {
    return (state & std::ios_base::badbit) != 0 ? "ios_base::badbit set" : "ios_base::failbit set";
}

// Runs operation(). A std::ios_base::failure that leaves it is replaced by one whose what() begins with the
// text above for the state that the stream then has. Everything else passes.
template <typename Operation>
decltype(auto) WithFailureText(const std::ios& stream, Operation&& operation) {
    try {
        return std::forward<Operation>(operation)();
    } catch (const std::ios_base::failure&) {
        throw std::ios_base::failure(StreamFailureText(stream.rdstate()));
    }
}

}  // namespace orvel::util
