// What the module needs of the C++ runtime, so that nothing more of it is linked in. The whole
// runtime would keep thread-local storage, memory and an exception handler in the host's process
// each time that the module is unloaded.

#include <cstddef>
#include <cstdlib>
#include <new>

// Everything here asks for memory with std::nothrow. The forms that throw are left out on purpose:
// code that uses them does not link.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size > 0 ? size : 1);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size > 0 ? size : 1);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

const std::nothrow_t std::nothrow{};

// Where the vtable of a class that is being made or unmade has no function yet.
extern "C" void __cxa_pure_virtual() { std::abort(); }
