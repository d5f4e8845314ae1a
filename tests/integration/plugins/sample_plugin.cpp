// A plug-in made with the kit. It prints to standard output, as careless libraries do.
#include <cstdio>
#include <iostream>

#include "sdk/extractor.h"

namespace {

class SampleExtractor : public sdk::DocumentExtractor {
  protected:
    sdk::Document extract(const std::string& path) override {
        std::printf("opening a document\n");
        std::cout << "{\"jsonrpc\":\"2.0\"}" << std::endl;
        if (path == "missing") {
            throw sdk::ExtractionError(53, "missing: no such file");
        }
        sdk::Document document;
        document.properties["title"] = std::string("nul \0 and \xF0\x9F\xA6\x8A", 14);
        document.properties["data_size"] = std::int32_t{12};
        document.properties["last_time_modified"] = *base::DateTime::fromCivil({2001, 2, 3, 4, 5, 6});
        document.sentences.assign(3, std::string(5UL * 1024 * 1024, 'x'));
        document.metaTags = {{"Ann", "author"}, {"red", "colour"}};
        document.annotations = {{"Comment", "anchor", "text"}};
        return document;
    }
};

}  // namespace

int main(int argc, char** argv) {
    return sdk::runPlugin(argc, argv, [] { return std::make_unique<SampleExtractor>(); });
}
