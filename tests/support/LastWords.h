// What a program says that touches forbidden memory: which call it was in.
#pragma once

#include <signal.h>
#include <unistd.h>

#include <string>
#include <utility>

namespace volux::test {

/// While it lives, its text is written to stderr should the program end by SIGSEGV, after the text
/// of the object made before it. For one thread.
class LastWords {
public:
    explicit LastWords(std::string words) : words_(std::move(words) + '\n'), before_(last())
    {
        last() = this;
        static const bool isListening = listen();
        static_cast<void>(isListening);
    }
    ~LastWords() { last() = before_; }
    LastWords(const LastWords&) = delete;
    LastWords& operator=(const LastWords&) = delete;

private:
    static const LastWords*& last()
    {
        static const LastWords* object = nullptr;
        return object;
    }

    // The handler that was there, a sanitizer's or the system's, goes on from the same instruction.
    static struct sigaction& former()
    {
        static struct sigaction action;
        return action;
    }

    static bool listen()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {
            say(last());
            sigaction(SIGSEGV, &former(), nullptr);
        };
        return sigaction(SIGSEGV, &action, &former()) == 0;
    }

    static void say(const LastWords* object)
    {
        if (object == nullptr)
            return;
        say(object->before_);
        const std::string& words = object->words_;
        static_cast<void>(!write(STDERR_FILENO, words.data(), words.size()));
    }

    std::string words_;
    const LastWords* before_;
};

}  // namespace volux::test
