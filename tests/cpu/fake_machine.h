// A machine made of figures: registers by leaf, clocks that run as told, and a note of every change
// of affinity and priority.

#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "cpu/machine.h"

namespace tavo::test {

constexpr uint32_t kTimeStampBit = 1u << 4;
constexpr uint32_t kMmxBit = 1u << 23;
constexpr uint32_t kSseBit = 1u << 25;
constexpr uint32_t kSse2Bit = 1u << 26;
constexpr uint32_t kHyperThreadingBit = 1u << 28;
constexpr uint32_t k3DNowBit = 1u << 31;
constexpr uint32_t kExt3DNowBit = 1u << 30;

class FakeMachine : public Machine {
  public:
    virtual ~FakeMachine() = default;

    bool hasCpuid = true;
    std::map<uint32_t, CpuidRegisters> leaves;

    bool hasFrequency = true;
    uint64_t frequency = 10'000'000;
    uint64_t ticks = 0;
    uint64_t ticksPerRead = 1;
    double cyclesPerTick = 50;  // 500 MHz at the frequency above
    uint64_t ticksPerScanLoop = 1;
    std::function<uint64_t(uint64_t)> counterOf = [](uint64_t ticks) { return ticks; };
    std::function<uint32_t(uint64_t)> stampOf;  // of the ticks; by default cyclesPerTick of them

    int processorCount = 1;
    bool hasAffinity = true;
    uintptr_t processMask = 1, systemMask = 1, refusedMask = 0;
    std::map<uintptr_t, uint8_t> apicIds;  // by processor bit
    std::vector<uintptr_t> affinities;     // as set
    uintptr_t affinity = 1;

    bool refusesPriorities = false;
    int priority = 7;
    std::vector<int> priorities;  // as set

    int frequencyCalls = 0, counterCalls = 0, scans = 0, cpuidCalls = 0, giveWays = 0;

    bool IsCpuidAvailable() override { return hasCpuid; }

    CpuidRegisters Cpuid(uint32_t leaf) override {
        ++cpuidCalls;
        CpuidRegisters registers = leaves[leaf];
        if (leaf == 1 && apicIds.count(affinity)) {
            registers.ebx = (registers.ebx & 0xffffff) | uint32_t{apicIds[affinity]} << 24;
        }
        return registers;
    }

    uint32_t TimeStamp() override {
        if (stampOf) return stampOf(ticks);
        return static_cast<uint32_t>(
            static_cast<uint64_t>(static_cast<double>(ticks) * cyclesPerTick));
    }

    void ScanBits(int count) override {
        scans += count;
        ticks += ticksPerScanLoop;
    }

    bool CounterFrequency(uint64_t& ticksPerSecond) override {
        ++frequencyCalls;
        if (hasFrequency) ticksPerSecond = frequency;
        return hasFrequency;
    }

    uint64_t Counter() override {
        ++counterCalls;
        return counterOf(ticks += ticksPerRead);
    }

    int ProcessorCount() override { return processorCount; }

    bool GetAffinity(uintptr_t& process, uintptr_t& system) override {
        if (!hasAffinity) return false;
        process = processMask;
        system = systemMask;
        return true;
    }

    bool SetAffinity(uintptr_t process) override {
        affinities.push_back(process);
        if (process & refusedMask && process != processMask) return false;
        affinity = process;
        return true;
    }

    void GiveWay() override { ++giveWays; }

    int ThreadPriority() override { return priority; }

    bool ChangeThreadPriority(int newPriority) override {
        priorities.push_back(newPriority);
        if (refusesPriorities) return false;
        priority = newPriority;
        return true;
    }

    void SetVendor(const char* vendor) {
        leaves[0].ebx = Word(vendor);
        leaves[0].edx = Word(vendor + 4);
        leaves[0].ecx = Word(vendor + 8);
    }

    // The numbers as leaf 1 packs them.
    void SetNumbers(int family, int model, int stepping, int extendedFamily = 0,
                    int extendedModel = 0, int type = 0) {
        leaves[1].eax = static_cast<uint32_t>(stepping | model << 4 | family << 8 | type << 12 |
                                              extendedModel << 16 | extendedFamily << 20);
    }

    void SetBrand(const char* brand) {
        char text[48] = {};
        strncpy(text, brand, sizeof(text) - 1);
        SetFullBrand(text);
    }

    // All 48 characters.
    void SetFullBrand(const char* text) {
        leaves[0x80000000].eax = 0x80000004;
        for (uint32_t leaf = 0; leaf < 3; ++leaf, text += 16) {
            leaves[0x80000002 + leaf] = {Word(text), Word(text + 4), Word(text + 8),
                                         Word(text + 12)};
        }
    }

    void SetExtendedFeatures(uint32_t edx) {
        leaves[0x80000000].eax = 0x80000001;
        leaves[0x80000001].edx = edx;
    }

  private:
    static uint32_t Word(const char* text) {
        uint32_t word = 0;
        for (int i = 3; i >= 0; --i) word = word << 8 | static_cast<uint8_t>(text[i]);
        return word;
    }
};

}  // namespace tavo::test
