// One text for each stream failure. The standard libraries have different texts, but the add-on must report
// the same whichever library it is built with.
#pragma once

#include <ios>
#include <utility>

namespace orvel::util {

// "ios_base::badbit set" or "ios_base::failbit set", by the worst flag of the state. A static string.
inline const char* StreamFailureText(std::ios_base::iostate state) {
    return (state & std::ios_base::badbit) != 0 ? "ios_base::badbit set" : "ios_base::failbit set";
}

// Runs operation(). Replaces a std::ios_base::failure by one whose what() begins with the text above, for the
// state the stream then has. Other exceptions pass through.
template <typename Operation>
decltype(auto) WithFailureText(const std::ios& stream, Operation&& operation) {
    try {
        return std::forward<Operation>(operation)();
    } catch (const std::ios_base::failure&) {
        throw std::ios_base::failure(StreamFailureText(stream.rdstate()));
    }
}

}  // namespace orvel::util
