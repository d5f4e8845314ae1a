#include <memory>

#include "sdk/extractor.h"
#include "text/text_extractor.h"

int main(int argc, char** argv) {
    return sdk::runPlugin(argc, argv, [] { return std::make_unique<text::TextExtractor>(); });
}
