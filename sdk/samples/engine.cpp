// SPDX-License-Identifier: MIT
// engine KEY VALUE: stands in for the audio engine and publishes levels, one picture a line
// of its input:
//
//   levels NUMBER                  the picture with that number; they make a moving wave
//
// KEY is the registry key below HKEY_LOCAL_MACHINE, VALUE the name of the value in it:
// docs/store-schema.md has both, and the layout of the data. It answers
//
//   TIME|published|RESULT|LEVELS   what a display is to show of it; RESULT 0: it is stored
//
// The engine is not a client of the library: it knows the registry only.
//
// One line builds it here:
//
//   x86_64-w64-mingw32-g++ -std=c++20 -static -I../include engine.cpp sample_client.cpp -o engine.exe -L../lib -lkora4_sdk_guids -lole32 -luuid
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <utility>
#include <vector>

#include "sample_client.h"

namespace {

// The levels of one audio processing object, in dB, band by band.
struct Record {
    std::vector<float> gains;
    std::vector<float> excitations;
};

// The value as readers expect it: little-endian, without gaps.
class Blob {
  public:
    explicit Blob(const std::vector<Record>& records) {
        Append(cReserved);
        Append(static_cast<std::uint32_t>(records.size()));
        for (const Record& record : records) {
            Append(record);
        }
    }
    const std::vector<BYTE>& Bytes() const { return m_bytes; }

  private:
    static constexpr std::uint32_t cReserved = 0;
    static constexpr std::size_t cRecordHeaderBytes = 16;

    template <typename Number>
    void Append(Number number) {
        const auto* bytes = reinterpret_cast<const BYTE*>(&number);
        m_bytes.insert(m_bytes.end(), bytes, bytes + sizeof number);
    }
    void Append(const Record& record) {
        m_bytes.insert(m_bytes.end(), cRecordHeaderBytes, BYTE{0});
        Append(static_cast<std::uint32_t>(record.gains.size()));
        Append(cReserved);
        for (const float gain : record.gains) {
            Append(gain);
        }
        for (const float excitation : record.excitations) {
            Append(excitation);
        }
    }

    std::vector<BYTE> m_bytes;
};

// A hill of `peak` dB, 54 dB above the plain, whose top is at the band `top`.
Record Hill(std::size_t bands, float peak, float top) {
    Record record;
    for (std::size_t band = 0; band < bands; ++band) {
        const float distance = (static_cast<float>(band) - top) / 3;
        const float gain = peak - 54 + 54 * std::exp(-distance * distance);
        record.gains.push_back(gain);
        record.excitations.push_back(gain - 20);
    }
    return record;
}

// Two processing objects: a wave that runs to and fro over all bands, and a beating bass.
std::vector<Record> Picture(unsigned number) {
    const float phase = static_cast<float>(number);
    const float beat = number % 4 == 0 ? 0.0f : -6.0f * static_cast<float>(number % 4);
    return {Hill(KORA4_VISUALIZATION_BANDS, -6.0f, 9.5f - 9.5f * std::cos(phase / 4)),
            Hill(5, beat - 3, 0)};
}

// Of all objects that have a band the loudest counts, and displays see the excitation 36 dB
// higher.
std::string Expected(const std::vector<Record>& records) {
    float gains[KORA4_VISUALIZATION_BANDS];
    float excitations[KORA4_VISUALIZATION_BANDS];
    std::fill(std::begin(gains), std::end(gains), KORA4_SILENT_GAIN);
    std::fill(std::begin(excitations), std::end(excitations), KORA4_SILENT_EXCITATION);
    for (const Record& record : records) {
        for (std::size_t band = 0; band < record.gains.size(); ++band) {
            gains[band] = std::max(gains[band], record.gains[band]);
            excitations[band] = std::max(excitations[band], record.excitations[band] + 36);
        }
    }
    return sample::LevelsWord(gains, excitations);
}

class Publisher {
  public:
    Publisher(const std::wstring& key, std::wstring value) : m_value(std::move(value)) {
        m_result = RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0,
                                 KEY_SET_VALUE | KEY_WOW64_64KEY, &m_key);
    }
    ~Publisher() {
        if (m_key) {
            RegCloseKey(m_key);
        }
    }
    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;

    LSTATUS Result() const { return m_result; }
    LSTATUS Publish(const std::vector<Record>& records) const {
        const Blob blob(records);
        return RegSetValueExW(m_key, m_value.c_str(), 0, REG_BINARY, blob.Bytes().data(),
                              static_cast<DWORD>(blob.Bytes().size()));
    }

  private:
    HKEY m_key = nullptr;
    std::wstring m_value;
    LSTATUS m_result;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "engine: use: engine KEY VALUE\n");
        return 1;
    }
    const Publisher publisher(sample::Widen(argv[1]), sample::Widen(argv[2]));
    if (publisher.Result() != ERROR_SUCCESS) {
        std::fprintf(stderr, "engine: %s cannot be opened: %ld\n", argv[1], publisher.Result());
        return 1;
    }
    sample::Report(sample::Now(), "ready", std::to_string(GetCurrentProcessId()));
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream arguments(line);
        std::string verb;
        unsigned number = 0;
        if (!(arguments >> verb >> number) || verb != "levels") {
            std::fprintf(stderr, "engine: '%s' is not understood\n", line.c_str());
            return 1;
        }
        const std::vector<Record> picture = Picture(number);
        const long long when = sample::Now();
        const LSTATUS result = publisher.Publish(picture);
        sample::Report(when, "published", std::to_string(result) + "|" + Expected(picture));
    }
    return 0;
}
