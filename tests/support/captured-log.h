// Collects what the LZ decoder logs while an object of this type lives. One at a time, one thread.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "oodle/oodle2/core/oodlebase.h"

class CapturedLog {
  public:
    CapturedLog() {
        s_lines.clear();
        Oodle_SetLogHook(Take);
    }
    ~CapturedLog() { Oodle_SetLogHook(nullptr); }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    // The texts of one level, in the order in which they came.
    std::vector<std::string> Lines(int level) const {
        std::vector<std::string> texts;
        for (const Line& line : s_lines) {
            if (line.level == level) texts.push_back(line.text);
        }
        return texts;
    }

  private:
    struct Line {
        int level;
        std::string text;
    };

    static void Take(int level, const char*, int, const char* format, ...) {
        char text[512];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        s_lines.push_back({level, text});
    }

    static inline std::vector<Line> s_lines;
};
