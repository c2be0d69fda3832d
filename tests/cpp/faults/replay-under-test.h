// A small replay with every kind of chunk and event, cut into sections that say what a fault in them must do,
// and one read of a replay as the add-on does it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/replay-builder.h"

namespace corvane_test {

enum class Outcome {
    Document,    // JSON text
    Empty,       // std::runtime_error: ReadCorvaneDemo returns ""
    ProcessEnd,  // a plain C string: ends the process, with that text
    Refused,     // no JSON text: a name is no UTF-8
    Forbidden    // anything else: a failure without a name
};

struct Section {
    const char* name;
    Bytes bytes;
    // The outcome of a file that ends before one of this section's bytes.
    Outcome whenCut;
    const char* failure = "";
    // No field is made of these bytes: whatever they are, the document stays the same.
    bool isInert = false;
    // Members of the document once the section is whole.
    bool hasHeader = false;
    std::size_t events = 0;
};

std::vector<Section> SectionsOfReplay();
std::vector<Section> SectionsOfEncryptedReplay();
Bytes Whole(const std::vector<Section>& sections);

struct ReadResult {
    Outcome outcome = Outcome::Forbidden;
    std::string text;  // the document, or what the failure says
    std::size_t peakBytes = 0;
};

// Reads a file as the add-on does, but returns the text. Throws std::bad_alloc when memory runs out.
ReadResult ReadFile(const std::wstring& path);
ReadResult Read(const Bytes& bytes);

// Keeps thousands of reads' lines off standard output.
struct QuietOutput {
    QuietOutput() { testing::internal::CaptureStdout(); }
    ~QuietOutput() { testing::internal::GetCapturedStdout(); }
};

}  // namespace corvane_test
