// SPDX-License-Identifier: MIT
// The working copy of all technology records for one profile, with the switches and the
// trigger words, and their way to and from the store.
#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/patch_records.h"
#include "contract/result.h"
#include "contract/technologies.h"
#include "store/access/key_access.h"

namespace kora4 {

struct KORA4FieldDef;

// The record of one technology inside a patch set, and the table that describes it.
struct TechnologyFields {
    void* pRecord = nullptr;
    const KORA4FieldDef* pFields = nullptr;
    std::uint32_t numberFields = 0;
};

// Bytes of PatchRecords.
struct RecordPart {
    std::size_t begin = 0;
    std::size_t size = 0;
};

// The words of the technologies that clients watch, by technology number; entry 0 is not used.
struct TechnologyWords {
    std::uint32_t m_dwPresetOnElseOff[eNumberKORA4PresetTechnologies] = {};
    std::uint32_t m_dwGlobalOnElseOff[eNumberKORA4GlobalTechnologies] = {};
    // The last trigger values seen, as loaded or as written.
    std::uint32_t m_dwPresetTriggers[eNumberKORA4PresetTechnologies] = {};
    std::uint32_t m_dwGlobalTriggers[eNumberKORA4GlobalTechnologies] = {};
};

// What a client knows of the two words of one technology that it watches; own writes move it,
// see MoveOwn. Null where the client knows nothing of the word that is written.
struct KnownWords {
    std::uint32_t* pOnElseOff = nullptr;
    std::uint32_t onElseOffBefore = 0;  // as read just before
    std::uint32_t* pTrigger = nullptr;
};

// What the patch set is handed at the end of each load. What follows from a technology's switch
// and the enable is worked out where it matters; the two refresh switches of the settings have
// no named meaning yet and change nothing.
struct RefreshSwitches {
    bool masterEnable = false;
    bool first = false;
    bool second = false;
};

// Not thread-safe: its owner holds the store's named mutex around every call that takes
// a key access.
class KORA4ManagedPatchSet : public TechnologyWords {
  public:
    KORA4ManagedPatchSet();

    // Clears records, switches and trigger words.
    void Reset();

    // Loads the switch and the record of one technology of a profile. With `defaultsOnly` the
    // store is not asked and the built-in defaults are taken.
    HRESULT LoadPresetPatch(KORA4KeyAccess& access, std::uint32_t profile, bool defaultsOnly,
                            KORA4PresetTechnology technology);

    // The halves of LoadPresetPatch: the switch, and the fields.
    HRESULT LoadPresetPatchEnable(KORA4KeyAccess& access, std::uint32_t profile,
                                  bool defaultsOnly, KORA4PresetTechnology technology);
    // Fields that lie in `except` are left as they are: their values are about to be replaced.
    HRESULT LoadPresetPatchData(KORA4KeyAccess& access, std::uint32_t profile,
                                bool defaultsOnly, KORA4PresetTechnology technology,
                                const RecordPart& except = {});
    // Every preset technology, 1 to 7; the results are not combined.
    void LoadPresetPatches(KORA4KeyAccess& access, std::uint32_t profile, bool defaultsOnly);

    // The same for a global technology, which has one record for all profiles.
    HRESULT LoadGlobalPatch(KORA4KeyAccess& access, KORA4GlobalTechnology technology);
    HRESULT LoadGlobalPatchEnable(KORA4KeyAccess& access, KORA4GlobalTechnology technology);
    HRESULT LoadGlobalPatchData(KORA4KeyAccess& access, KORA4GlobalTechnology technology);
    void LoadGlobalPatches(KORA4KeyAccess& access);

    // Writes switch, fields and, with `bumpTrigger` and after everything else succeeded, the
    // technology's trigger word. A profile that is not selectable is never written: S_OK.
    HRESULT WritePresetPatch(KORA4KeyAccess& access, std::uint32_t profile,
                             KORA4PresetTechnology technology, bool bumpTrigger,
                             const KnownWords& known = {});
    HRESULT WritePresetPatchEnable(KORA4KeyAccess& access, std::uint32_t profile,
                                   KORA4PresetTechnology technology,
                                   const KnownWords& known = {});

    // The defaults row of a profile: its own for a preset profile, that of its preset
    // profile for a demo profile, Movie's for every other one.
    static std::uint32_t DefaultsIndexForProfile(std::uint32_t profile);
    // Unlike the rows of fields, a custom profile has every technology on.
    static bool GetDefaultOnElseOff(KORA4PresetTechnology technology, std::uint32_t profile);
    static bool GetDefaultOnElseOff(KORA4GlobalTechnology technology);

    // The stored switch of a technology in a profile, or its default.
    static bool ReadPresetOnElseOff(KORA4KeyAccess& access, std::uint32_t profile,
                                    KORA4PresetTechnology technology);
    static bool ReadGlobalOnElseOff(KORA4KeyAccess& access, KORA4GlobalTechnology technology);

    // Reads all trigger words, of preset technologies 1 to 7 and global ones 1 to 3; a word
    // that cannot be read is 0.
    void LoadTriggers(KORA4KeyAccess& access);
    // Reads the switches of preset technologies 1 to 7, and of global ones 1 to 3.
    void LoadPresetOnElseOff(KORA4KeyAccess& access, std::uint32_t profile);
    void LoadGlobalOnElseOff(KORA4KeyAccess& access);

    // Ends a load and takes over what it was made with.
    void Refresh(const RefreshSwitches& switches);

    // E_INVALIDARG (and an assertion) for anything that is not a technology. The
    // next-generation surround has a record and no fields.
    HRESULT GetTechnologyFields(KORA4PresetTechnology technology, TechnologyFields* pOut);
    HRESULT GetTechnologyFields(KORA4GlobalTechnology technology, TechnologyFields* pOut);

    PatchRecords m_records;
    RefreshSwitches m_refreshSwitches;

  private:
    HRESULT WritePresetTechPatchData(KORA4KeyAccess& access, std::uint32_t profile,
                                     KORA4PresetTechnology technology);
    void BumpPresetTrigger(KORA4KeyAccess& access, KORA4PresetTechnology technology,
                           std::uint32_t* pKnownTrigger);
};

}  // namespace kora4
