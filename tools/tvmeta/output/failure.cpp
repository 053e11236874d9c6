#include "output/failure.h"

#include "output/text.h"

#include <iostream>

void complain(const std::string& message) {
    std::cerr << "tvmeta: " << printable(message) << "\n";
}

std::string explain(int32_t result, std::initializer_list<Meaning> meanings) {
    std::string text = "unexpected result of the library";
    for (const Meaning& meaning : meanings) {
        if (meaning.result == result) {
            text = meaning.text;
        }
    }
    return text;
}
