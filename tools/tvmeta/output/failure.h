// What went wrong, in words for the person at the terminal.
#pragma once

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <stdexcept>
#include <string>

// Ends a command; what() says which file it is about and why.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
    Failure(const std::string& path, const std::string& reason) : std::runtime_error(path + ": " + reason) {}
};

// A command line that asks for what does not exist.
class WrongCommandLine : public Failure {
  public:
    using Failure::Failure;
};

// Ends a command that has already said what went wrong.
class Reported : public std::exception {};

// Writes a line to standard error, whatever bytes of file names and files the message holds.
void complain(const std::string& message);

// What one result code of one library function means.
struct Meaning {
    int32_t result;
    std::string text;
};

// The words for a library result. Each call site states the meanings of its function.
std::string explain(int32_t result, std::initializer_list<Meaning> meanings);
