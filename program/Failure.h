#pragma once

#include <stdexcept>
#include <string>

/// What went wrong, in words for the person who started the program.
class Failure : public std::runtime_error {
public:
    explicit Failure(std::string const& what) : std::runtime_error(what) {}
    /// With the name of the file that it is about.
    Failure(std::string const& file, std::string const& what) : std::runtime_error(file + ": " + what) {}
};

/// What is wrong with how the program was started.
class UsageError : public Failure {
public:
    using Failure::Failure;
};
