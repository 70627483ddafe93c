// What a property page of this module tells a frame that asks before it applies: whether all that
// was typed can be read. Other frames do not ask; then the page applies what it makes
// of such a text: 0 for a size; for a rate the number that the text begins with, or off.

#pragma once

#include <windows.h>

#include <unknwn.h>

// {96DF7625-DC95-4D5B-97F7-1F030FACAC12}
inline constexpr IID IID_IInputCheck = {
    0x96df7625, 0xdc95, 0x4d5b, {0x97, 0xf7, 0x1f, 0x03, 0x0f, 0xac, 0xac, 0x12}};

// On the thread of the page's window.
class IInputCheck : public IUnknown {
  public:
    // S_OK, or S_FALSE where the text of an edit cannot be read. S_OK while the page is not shown.
    virtual HRESULT STDMETHODCALLTYPE CheckInput() = 0;
    // Puts the cursor where CheckInput found fault, and says there what is wanted.
    virtual HRESULT STDMETHODCALLTYPE PointToInput() = 0;
};
