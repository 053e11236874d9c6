// Errors and their messages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <initializer_list>
#include <map>
#include <stdexcept>
#include <string>

// Ends a command; what() contains the path and the reason.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    Failure(const std::string& path, const std::string& reason)
        : std::runtime_error((path.empty() ? "''" : path) + ": " + reason) {}
};

// An invalid command line.
class WrongCommandLine : public Failure {
  public:
    using Failure::Failure;
};

// Ends a command that has already printed its message.
class Reported : public std::exception {};

// Writes a line to standard error; bytes that are not printable are escaped.
void complain(const std::string& message);

// Prints messages about many files: the first ten of a kind, then a count.
class FileMessages {
  public:
    // Numbers and quoted texts in messages do not make another kind, nor does the path at the start.
    void add(const std::string& path, const std::string& message);

    // Prints the counts.
    void finish() const;

    size_t count() const { return total; }

  private:
    size_t total = 0;
    std::map<std::string, size_t> kinds;
};

// The meaning of one result of a library function.
struct Meaning {
    int32_t result;
    std::string text;
};

// The text for a library result. Each call lists the meanings for its function.
std::string explain(int32_t result, std::initializer_list<Meaning> meanings);
