// tyindexerd: the indexing service without a screen.
#include "app/main_service.h"
#include "platform/headless/headless_toolkit.h"
#include "platform/posix/signal_waiter.h"

int main(int argc, char** argv) {
    return app::runService(argc, argv,
                           {"tyindexerd", "Indexes the documents that the queue of a document library names.",
                            [](platform::posix::SignalWaiter& waiter) {
                                return std::make_unique<platform::headless::HeadlessToolkit>(waiter);
                            }});
}
