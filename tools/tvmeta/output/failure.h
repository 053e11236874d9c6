// Errors and their messages.
#pragma once

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <stdexcept>
#include <string>

// Ends a command; what() contains the path and the reason.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    Failure(const std::string& path, const std::string& reason) : std::runtime_error(path + ": " + reason) {}
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

// The meaning of one result of a library function.
struct Meaning {
    int32_t result;
    std::string text;
};

// The text for a library result. Each call lists the meanings for its function.
std::string explain(int32_t result, std::initializer_list<Meaning> meanings);
