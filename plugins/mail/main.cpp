#include <memory>

#include "mail/mail_extractor.h"
#include "sdk/extractor.h"

int main(int argc, char** argv) {
    return sdk::runPlugin(argc, argv, [] { return std::make_unique<mail::MailExtractor>(); });
}
