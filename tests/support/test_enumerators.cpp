// Both enumerators are one template: they differ in how an item is handed out.
#include "tests/support/test_enumerators.h"

#include <algorithm>
#include <atomic>

#include "tests/support/live_objects.h"

namespace tavo_test {
namespace {

IPin* HandOut(const ComPtr<IPin>& pin) { return ComPtr<IPin>(pin).Detach(); }

AM_MEDIA_TYPE* HandOut(const MediaType& type) {
    auto* record = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
    if (!record) return nullptr;
    MediaType copy(type);
    *record = *copy;
    *copy.Get() = {};
    return record;
}

template <typename Interface, typename Item, typename Handed>
class ListEnumerator : public Interface, private LiveObject<LiveKind::kEnumerator> {
  public:
    ListEnumerator(std::vector<Item> items, size_t position)
        : items_(std::move(items)), position_(position) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        const bool known = iid == IID_IUnknown || iid == __uuidof(Interface);
        *object = known ? static_cast<Interface*>(this) : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references_); }
    STDMETHODIMP_(ULONG) Release() override {
        const long left = --references_;
        if (left == 0) delete this;
        return static_cast<ULONG>(left);
    }

    STDMETHODIMP Next(ULONG count, Handed* handed, ULONG* fetched) override {
        if (!handed) return E_POINTER;
        if (!fetched && count > 1) return E_INVALIDARG;
        ULONG done = 0;
        while (done < count && position_ < items_.size()) {
            handed[done++] = HandOut(items_[position_++]);
        }
        if (fetched) *fetched = done;
        return done == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override {
        const size_t target = position_ + count;
        position_ = std::min(target, items_.size());
        return position_ == target ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override {
        position_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(Interface** clone) override {
        if (!clone) return E_POINTER;
        *clone = new ListEnumerator(items_, position_);
        return S_OK;
    }

  private:
    virtual ~ListEnumerator() = default;

    std::atomic<long> references_ = 1;
    const std::vector<Item> items_;
    size_t position_;
};

}  // namespace

IEnumPins* MakePinEnumerator(std::vector<ComPtr<IPin>> pins) {
    return new ListEnumerator<IEnumPins, ComPtr<IPin>, IPin*>(std::move(pins), 0);
}

IEnumMediaTypes* MakeTypeEnumerator(std::vector<MediaType> types) {
    return new ListEnumerator<IEnumMediaTypes, MediaType, AM_MEDIA_TYPE*>(std::move(types), 0);
}

}  // namespace tavo_test
