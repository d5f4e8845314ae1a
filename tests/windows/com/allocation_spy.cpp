#include "windows/com/allocation_spy.h"

#include <windows.h>
// windows.h stands first: COM's headers need it.
#include <objbase.h>

#include <set>

// No header declares it. Without arguments every calling convention is the same.
extern "C" void SetOaNoCache();

namespace com_tests {
namespace {

/// COM holds it as long as a block that it has seen lives, so it is never deleted.
class Spy : public IMallocSpy {
  public:
    static Spy& shared() {
        static auto* const spy = new Spy;
        return *spy;
    }

    void forget() {
        held_.clear();
        allocated_ = 0;
    }
    [[nodiscard]] std::size_t held() const { return held_.size(); }
    [[nodiscard]] std::size_t allocated() const { return allocated_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        const bool isKnown = id == IID_IUnknown || id == IID_IMallocSpy;
        *object = isKnown ? static_cast<IMallocSpy*>(this) : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T size) override { return size; }
    void* STDMETHODCALLTYPE PostAlloc(void* block) override {
        take(block);
        return block;
    }
    void* STDMETHODCALLTYPE PreFree(void* block, BOOL /*isSpied*/) override {
        held_.erase(block);
        return block;
    }
    void STDMETHODCALLTYPE PostFree(BOOL /*isSpied*/) override {}
    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T size, void** passed, BOOL /*isSpied*/) override {
        moved_ = held_.erase(block) != 0 ? block : nullptr;
        *passed = block;
        return size;
    }
    void* STDMETHODCALLTYPE PostRealloc(void* block, BOOL /*isSpied*/) override {
        if (block != nullptr) {
            held_.insert(block);
        } else if (moved_ != nullptr) {
            held_.insert(moved_);  // it stays where it was
        }
        return block;
    }
    void* STDMETHODCALLTYPE PreGetSize(void* block, BOOL /*isSpied*/) override { return block; }
    SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T size, BOOL /*isSpied*/) override { return size; }
    void* STDMETHODCALLTYPE PreDidAlloc(void* block, BOOL /*isSpied*/) override { return block; }
    int STDMETHODCALLTYPE PostDidAlloc(void* /*block*/, BOOL /*isSpied*/, int answer) override {
        return answer;
    }
    void STDMETHODCALLTYPE PreHeapMinimize() override {}
    void STDMETHODCALLTYPE PostHeapMinimize() override {}

  private:
    void take(void* block) {
        if (block != nullptr) {
            held_.insert(block);
            ++allocated_;
        }
    }

    std::set<void*> held_;
    std::size_t allocated_ = 0;
    void* moved_ = nullptr;
};

}  // namespace

AllocationSpy::AllocationSpy() {
    ::SetOaNoCache();
    Spy::shared().forget();
    ::CoRegisterMallocSpy(&Spy::shared());
}

AllocationSpy::~AllocationSpy() {
    ::CoRevokeMallocSpy();
}

std::size_t AllocationSpy::held() const {
    return Spy::shared().held();
}

std::size_t AllocationSpy::allocated() const {
    return Spy::shared().allocated();
}

}  // namespace com_tests
