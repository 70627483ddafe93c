// The allocation spy behind the counts and the refusals.
#include "tests/support/task_memory.h"

#include <objidl.h>
#include <windows.h>

#include <cstdlib>

#include "tests/support/refusals.h"

namespace tavo_test {
namespace {

thread_local long t_live = 0;
thread_local Refusals t_refusals;
thread_local bool t_growingNothing = false;  // a Realloc of a null pointer is on its way

class Spy final : public IMallocSpy {
  public:
    virtual ~Spy() = default;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        const bool known = iid == IID_IUnknown || iid == IID_IMallocSpy;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T size) override {
        return t_refusals.RefuseNext() ? 0 : size;
    }
    STDMETHODIMP_(void*) PostAlloc(void* block) override {
        if (block) ++t_live;
        return block;
    }
    STDMETHODIMP_(void*) PreFree(void* block, WINBOOL) override {
        // Not every block that was seen being allocated counts as spied: a refused Realloc ends
        // that.
        if (block) --t_live;
        return block;
    }
    STDMETHODIMP_(void) PostFree(WINBOOL) override {}
    STDMETHODIMP_(SIZE_T)
    PreRealloc(void* block, SIZE_T size, void** newBlock, WINBOOL) override {
        *newBlock = block;
        t_growingNothing = !block;
        return t_refusals.RefuseNext() ? 0 : size;
    }
    STDMETHODIMP_(void*) PostRealloc(void* block, WINBOOL) override {
        if (block && t_growingNothing) ++t_live;
        return block;
    }
    STDMETHODIMP_(void*) PreGetSize(void* block, WINBOOL) override { return block; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T size, WINBOOL) override { return size; }
    STDMETHODIMP_(void*) PreDidAlloc(void* block, WINBOOL) override { return block; }
    STDMETHODIMP_(int) PostDidAlloc(void*, WINBOOL, int actual) override { return actual; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}
};

// Installed when the program starts, so that no block is freed that was not seen before.
void InstallOnce() {
    static Spy spy;
    static const HRESULT result = CoRegisterMallocSpy(&spy);
    if (FAILED(result)) std::abort();
}

const bool g_installed = (InstallOnce(), true);

}  // namespace

long LiveTaskBlocks() { return g_installed ? t_live : 0; }

FailTaskMemory::FailTaskMemory(int after) { t_refusals.Start(after); }

FailTaskMemory::~FailTaskMemory() { t_refusals.End(); }

int FailTaskMemory::refused() const { return t_refusals.Refused(); }

}  // namespace tavo_test
