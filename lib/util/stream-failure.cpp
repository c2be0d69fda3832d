// The texts of stream failures.
#include "util/stream-failure.h"

namespace orvel::util {

const char* StreamFailureText(std::ios_base::iostate state) {
    return (state & std::ios_base::badbit) != 0 ? "ios_base::badbit set" : "ios_base::failbit set";
}

}  // namespace orvel::util
