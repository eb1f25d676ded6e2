// SPDX-License-Identifier: MIT
// The same for the interfaces that are not public: the gate and those of the processing
// objects.
#ifndef KORA4_TESTS_CONTRACT_PROXY_PRIVATE_RECORDERS_H
#define KORA4_TESTS_CONTRACT_PROXY_PRIVATE_RECORDERS_H

#include <numeric>

#include "comcallbackgate.h"
#include "contract/proxy/recorder.h"
#include "kaltrixaudioprocessor.h"
#include "kaltrixveltokora4.h"
#include "kaltrixversion.h"

namespace kora4::test {

// A number that depends on every element and its place.
template <typename T>
ULONG Digest(const T* elements, size_t count) {
    ULONG digest = 17;
    for (size_t i = 0; i < count; ++i)
        digest = digest * 31 + static_cast<ULONG>(elements[i]);
    return digest;
}

// Records the calls of the gate of the monitor.
class GateRecorder : public Recorder<ICOMCallbackGate> {
  public:
    STDMETHODIMP Callback(ULONG value) override { return Saw(3, "Callback", value); }

  private:
    const char* InterfaceName() const override { return "ICOMCallbackGate"; }
};

// Records the calls of the version interface.
class VersionRecorder : public Recorder<IKaltrixVersion> {
  public:
    STDMETHODIMP GetVersionCharacter(LONG index, CHAR* pCharacter) override {
        *pCharacter = 'k';
        return Saw(3, "GetVersionCharacter", index);
    }

  private:
    const char* InterfaceName() const override { return "IKaltrixVersion"; }
};

// Records the calls of the processor's interface.
class ProcessorRecorder : public Recorder<IKaltrixAudioProcessor> {
  public:
    STDMETHODIMP Control(LONG code, UINT64 first, INT64 second) override {
        return Saw(3, "Control", code, first, second);
    }
    STDMETHODIMP SetFormats(const KaltrixStreamFormat* in,
                            const KaltrixStreamFormat* out) override {
        return Saw(4, "SetFormats", Digest(in->m_words, 9), Digest(out->m_words, 9));
    }
    STDMETHODIMP Exchange(float value, float* pResult, LONG index) override {
        *pResult = value * 2;
        return Saw(5, "Exchange", value, index);
    }
    STDMETHODIMP Reset() override { return Saw(6, "Reset"); }

  private:
    const char* InterfaceName() const override { return "IKaltrixAudioProcessor"; }
};

// Records the calls of the processor's interface for this engine.
class Kora4Recorder : public Recorder<IKaltrixVeltoKORA4> {
  public:
    STDMETHODIMP LocalAttach(void*) override { return Saw(3, "LocalAttach"); }
    STDMETHODIMP LocalDetach(void*) override { return Saw(4, "LocalDetach"); }
    STDMETHODIMP LocalRead(void*) override { return Saw(5, "LocalRead"); }
    STDMETHODIMP LocalWrite(void*) override { return Saw(6, "LocalWrite"); }
    STDMETHODIMP Configure(KaltrixSelector selector, const KaltrixHeader* header, LONG first,
                           LONG second, const KaltrixParameterBlock* block, LONG third,
                           LONG fourth, float fifth, float sixth,
                           const BYTE bytes[256]) override {
        return Saw(7, "Configure", selector, Digest(header->m_words, 4), first, second,
                   Digest(block->m_words, 725), third, fourth, fifth, sixth,
                   Digest(bytes, 256));
    }
    STDMETHODIMP SetPair(float first, float second) override {
        return Saw(8, "SetPair", first, second);
    }
    STDMETHODIMP SetSwitch(KaltrixSelector selector, LONG value) override {
        return Saw(9, "SetSwitch", selector, value);
    }
    STDMETHODIMP SetValue(KaltrixValue* value) override {
        return Saw(10, "SetValue", value->m_selector, value->m_values.m_number);
    }
    STDMETHODIMP SetOption(KaltrixSelector selector, LONG value) override {
        return Saw(11, "SetOption", selector, value);
    }
    STDMETHODIMP ApplyValue(KaltrixValue* value) override {
        return Saw(12, "ApplyValue", value->m_selector, value->m_values.m_number);
    }
    STDMETHODIMP GetState(LONG* state) override {
        *state = -99;
        return Saw(13, "GetState");
    }
    STDMETHODIMP GetLevels(LONG* count, float* first, float* second) override {
        const HRESULT hr = Saw(14, "GetLevels", *count);
        *count += 1;
        *first = 0.25f;
        *second = -0.75f;
        return hr;
    }
    STDMETHODIMP GetCounters(LONG first, LONG second, LONG* a, LONG* b, LONG* c) override {
        *a = 101;
        *b = 102;
        *c = 103;
        return Saw(15, "GetCounters", first, second);
    }

  private:
    const char* InterfaceName() const override { return "IKaltrixVeltoKORA4"; }
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_CONTRACT_PROXY_PRIVATE_RECORDERS_H
