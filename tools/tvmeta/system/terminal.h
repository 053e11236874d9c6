// Properties of the terminal, if there is one.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

// The columns for a table on standard output: COLUMNS if it is set, else those of the terminal. None when the output
// goes to a file or another program, which can take any width.
std::optional<int> outputWidth();

// Shows the progress of long work on standard error if that is a terminal, and erases it at the end.
class Progress {
  public:
    Progress();
    ~Progress() { erase(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void found(size_t count);
    void done(size_t count, size_t total);
    void erase();

  private:
    using Clock = std::chrono::steady_clock;

    void show(const std::string& text);
    bool isDue();

    bool isTerminal;
    bool isShown = false;
    Clock::time_point next;
};
