#pragma once

#include "cfffile.h"
#include "chnmap.h"
#include "cmtdchannel.h"
#include "cmtdtypes.h"
#include "infrecord.h"
#include "units.h"

#include <QByteArray>
#include <QString>

class QIODevice;

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

// The whole recording in memory: the description read from the ".cfg", the channel records,
// the samples once loaded, and the messages that loading produced, one list per source.
// The readers are tolerant: a bad field gives a message and the read goes on; `Validate`
// alone decides whether the recording may be opened. A frame owns one object per recording;
// analysis code only borrows it.
// Progress of a long job: code 8 starts (returns the step, a positive number of samples
// between reports), 10 reports `current` of `total`, 0 polls for cancel (negative cancels).
using ProgressFn = int (*)(void *context, int code, int total, int current);

// The largest absolute value of the analog stores of one signal class and unit; rows of one
// group share a vertical scale.
struct ScaleGroup
{
    CChnMapAnalog *store = nullptr;
    ChnUnit unit;
    int16_t chnClass = 0;
    float peak = 0.0f;
};

// Decides which stores a walk over the recording keeps.
class CChnMapFilter
{
public:
    virtual ~CChnMapFilter();
    virtual bool acceptAnalog(int index) const { return true; }
    virtual bool acceptStatus(int index) const { return true; }
};

class CCmtd99File
{
public:
    // Results of the readers.
    enum ReadResult
    {
        ReadSection = 1,
        ReadKey = 2,
        ReadDone = 3,
        ReadNoMemory = 4,
        ReadRefused = 5,
        ReadContinue = -1 // a step of the configuration reader went well: the next one follows
    };

    // Bits of `validationMask`.
    enum ValidationBit
    {
        BadTotal = 1,
        BadAnalog = 2,
        BadStatus = 4,
        BadSum = 8,
        BadSegments = 16,
        BadTimeMult = 32
    };

    struct Cursor
    {
        int32_t line = 0;
        QByteArray text;
    };

    CCmtd99File() = default;
    CCmtd99File(const CCmtd99File &) = delete;
    CCmtd99File &operator=(const CCmtd99File &) = delete;
    virtual ~CCmtd99File();

    // Loads everything but the samples; `path` may carry any extension. True when usable.
    bool LoadFile(const char *path);
    // Reads a ".cfg" into the description and the channel records.
    int LoadCfg(const char *path);
    // The same from an open file (a ".cfg", or the configuration section of a ".cff").
    int LoadCfgFrom(CDiskFile &file);
    // The number behind the version tag of an extension file, 0 if none.
    int ReadInfVersion(const char *path);
    // Reads an extension file (or a settings file, which is its sections alone) into what the
    // recording holds; a field already given stays. 3 when read (or absent), 4 out of memory.
    int LoadInf(const char *path);
    // Writes the extension file through a write set; the first save of a file of an older
    // version keeps the old one as path + ".bak". False with `saveError` on failure.
    bool SaveInf(const char *path);
    // The whole extension file, or the private sections whose InfSectionBit is in `mask`.
    void WriteInf(CTextOutput &out);
    bool WriteInfSections(CTextOutput &out, uint32_t mask);
    // Sections of the extension file that no reader knows; the standard keeps them as text.
    virtual int OnUnknownPublicSection(const QByteArray &head, const InfKeyLines &keys);
    virtual int OnUnknownPrivateSection(const QByteArray &head, const InfKeyLines &keys);
    // Checks the counts, builds the effective segments; 0 means usable.
    int Validate();
    // The writers go through a write set: a failure leaves the earlier file as it was, returns
    // false and leaves the file and the system's reason in `saveError`.
    bool SaveCfg(const char *path);
    // Writes the data file and the configuration as one pair: both complete before either
    // takes its name, ".dat" first. A name ending in ".cfg" (any case) is kept as given.
    bool SaveFile(const char *path);
    // Reads the samples; true when at least 5 were loaded. Runs on the frame's worker.
    bool LoadDat(const char *path, ProgressFn fn, void *context);
    // Writes the loaded samples in the form that `fileType` names.
    bool SaveDat(const char *datPath, int reserved1 = 0, int reserved2 = 0);
    // The bodies of SaveCfg and SaveDat, onto a device of a write set.
    bool WriteCfg(QIODevice &out) const;
    bool WriteDat(QIODevice &out);
    void BuildScaleGroups();
    // Fills this (empty) recording with samples `first` .. `last` of `source` and the chosen
    // channels, each rate segment above `highestRate` (0: none) thinned to a whole fraction of
    // its rate; the plant units that use a chosen channel come along with their channels
    // renumbered. Start and trigger lie on sample `first`. False with `error` when memory ran out.
    bool CutFrom(const CCmtd99File &source, int first, int last,
                 const std::vector<const CChnMapAnalog *> &analogs,
                 const std::vector<const CChnMapStatus *> &statuses, const QByteArray &title,
                 float highestRate, QString &error);
    // Samples `first` .. `last` of the chosen channels as a ".csv" table: a head line, then the
    // sample number, the time from the trigger in microseconds and the values. False with
    // `error` when the file could not be written.
    bool SaveCsv(const QString &path, int first, int last, const std::vector<const CChnMapAnalog *> &analogs,
                 const std::vector<const CChnMapStatus *> &statuses, QString &error) const;
    // Back to the empty state; `datMessages` survive.
    void ClearAll();
    // The engineer's own edits of a loaded recording, the only changes made from outside the
    // readers: T0' (a sample index, -1 for none; outside the loaded samples it is refused) and
    // the text encoding of the names (empty to find it again from the bytes).
    bool SetCustomT0(int index);
    void SetCodecOverride(const QByteArray &codec);

    CmtdChn_Analog *FindAnalogChannel(int index) const;
    CmtdChn_Status *FindStatusChannel(int index) const;
    CmtdChn_Analog *FindAnalogChannelByName(const char *name) const;
    CmtdChn_Status *FindStatusChannelByName(const char *name) const;
    CChnMapAnalog *FindAnalogMap(int index) const;
    CChnMapStatus *FindStatusMap(int index) const;
    CChnMapBase *FindMapByName(const char *name) const;
    // Appends every store that the filter accepts; a virtual analog channel is tested with the
    // index of the real channel it stands for.
    void SelectMaps(const CChnMapFilter &filter, std::vector<CChnMapBase *> &list) const;

    // The channel index at which virtual (derived) channels begin.
    bool IsVirtualAnalog(const CmtdChn_Base &channel) const { return channel.index >= firstFreeChannelIndex; }
    // The analog channels that the file holds: the leading part of `analogChannels`, virtual
    // channels standing behind them. Writers put these on disk and no others.
    int FileAnalogCount() const;
    // Their stores: the same leading part of `analogMaps` (none before the samples are read).
    int FileAnalogStoreCount() const;
    // A message of the worker's jobs (the sample reader, the derived channels).
    void AddDatMessage(const QByteArray &text);

    int32_t validationMask = 0;
    uint32_t infSectionsSeen = 0;
    int16_t infVersion = 0;
    Cursor cursor;
    LoadMessageList infMessages;
    InfRecordInfo recordInfo;
    std::vector<InfStatusEvent> statusEvents;
    std::vector<InfCommentary> commentaries;
    InfKeyValueList settingsKeys; // keys of the settings section other than T0'

    QList<QByteArray> expressionLines;
    QList<InfRawSection> publicExtraSections;
    QList<InfRawSection> privateExtraSections;
    QList<InfRawSection> foreignSections;
    // Primary device units by kind, in the order the extension file gave them, and the
    // recorder's own reports.
    std::vector<std::unique_ptr<CmtdInfTrwk_UnitLine>> lineUnits;
    std::vector<std::unique_ptr<CmtdInfTrwk_UnitTrm>> transformerUnits;
    std::vector<std::unique_ptr<CmtdInfTrwk_UnitPwr>> powerUnits;
    std::vector<std::unique_ptr<CmtdInfTrwk_UnitExci>> exciterUnits;
    std::vector<std::unique_ptr<CmtdInfTrwk_Unit>> groupUnits;
    std::vector<CmtdReport> reportRecords;
    // Lines, transformers, power units, exciters, groups in this order; null for an id below 1
    // or an empty name (names compared without regard to case).
    CmtdInfTrwk_Unit *FindUnitById(int32_t devId) const;
    CmtdInfTrwk_Unit *FindUnitByName(const QByteArray &name) const;
    // Takes a unit from the list of its kind and deletes it; false if it is not there.
    bool RemoveUnit(CmtdInfTrwk_Unit *unit);
    bool HasUnit(const CmtdInfTrwk_Unit *unit) const;
    // The first unit that `match` takes, in the order of the look-ups above.
    CmtdInfTrwk_Unit *FindUnit(const std::function<bool(const CmtdInfTrwk_Unit &)> &match) const;
    // Each channel store keeps the unit its monitored component names (after a load, and after
    // units came or went).
    void LinkStoresToUnits();
    // A message of the extension-file readers, with the line it concerns.
    void AddInfMessage(int32_t line, const QByteArray &text);
    LoadMessageList cfgMessages;
    LoadMessageList extMessages;
    LoadMessageList reservedMessages;
    LoadMessageList datMessages;
    // Why the last save failed: the file and the system's reason ("No space left on device").
    QString saveError;
    int32_t maxDeviceId = 0;
    int16_t firstFreeChannelIndex = 0;
    int16_t firstFreeChannelIndex2 = 0;
    int32_t pointCount = 0;
    int32_t loadedPoints = 0;
    int32_t triggerIndex = -1;
    std::vector<SampleSegment> segments;
    int64_t *sampleTimes = nullptr; // microseconds from the trigger, one per sample (malloc)
    std::vector<std::unique_ptr<CChnMapAnalog>> analogMaps;
    std::vector<std::unique_ptr<CChnMapStatus>> statusMaps;
    std::vector<ScaleGroup> scaleGroups;
    int32_t customT0 = -1; // the engineer's own zero of the time axis (T0'), a sample index
    // How the recording's 8-bit texts read: found from the ".cfg" bytes at each load, unless
    // the engineer chose one (`codecOverride`, kept across loads).
    QByteArray codecName;
    QByteArray codecOverride;
    // A ".cff" recording is read in place: its path and where its sections lie in it.
    QByteArray cffPath;
    CffLayout cffLayout;
    QString Text(const QByteArray &bytes) const;
    CmtdFileDescription fileDesc;
    std::vector<std::unique_ptr<CmtdChn_Analog>> analogChannels;
    std::vector<std::unique_ptr<CmtdChn_Status>> statusChannels;

protected:
    void AddCfgMessage(const QByteArray &text);

private:
    friend class CDatLoader;
    struct CfgLines;
    CDiskFile *OpenInfSource(const char *path, CDiskSection &section, CDiskFile &plain) const;
    int readIdentity(CfgLines &in);
    int readChannels(CfgLines &in);
    int readRates(CfgLines &in);
    int readStampsAndType(CfgLines &in);
    int readTimeLines(CfgLines &in);
    void BuildEffectiveSegments();
    bool LoadCffFile(const QByteArray &path);
    static QByteArray DetectCodecOf(CDiskFile &file);
    bool MergeDatParts(const QByteArray &base, const QByteArray &datPath);
    // Opens the samples' source: the ".dat" (joined from its parts where needed) or the data
    // section of a ".cff". Null with a message when there is none.
    std::unique_ptr<CDiskFile> OpenDataSource(const char *path);
    // One store per channel, each for `capacity` samples.
    bool BuildStores(int capacity);
    bool ReadAnalogLine(char *fields[], int count, int &result);
    bool ReadStatusLine(char *fields[], int count, int &result);
    // The readers of the extension file's own sections (infreader.cpp), each over the key
    // lines of one section; `number` is the one behind "#" in the head.
    int readInfSection(const QByteArray &head, int32_t headLine, const InfKeyLines &keys,
                       const QList<QByteArray> &rawLines);
    int readInfPrivateSection(const QByteArray &name, const QByteArray &head, int32_t headLine,
                              const InfKeyLines &keys, const QList<QByteArray> &rawLines);
    int readInfRecordInfo(const InfKeyLines &keys);
    int readInfFileDescription(const InfKeyLines &keys);
    int readInfAnalogChannel(int number, const InfKeyLines &keys);
    int readInfStatusChannel(int number, const InfKeyLines &keys);
    int readInfAnalogParameters(const InfKeyLines &keys);
    int readInfStatusParameters(const InfKeyLines &keys);
    int readInfStatusEvent(int32_t headLine, const InfKeyLines &keys);
    int readInfCommentary(const InfKeyLines &keys);
    int readInfSettings(const InfKeyLines &keys);
    // The writers of those sections (infwriter.cpp).
    void writeInfRecordInfo(CTextOutput &out) const;
    void writeInfFileDescription(CTextOutput &out) const;
    void writeInfPublicChannels(CTextOutput &out);
    void writeInfAnalogParameters(CTextOutput &out);
    void writeInfStatusParameters(CTextOutput &out);
    void writeInfStatusEvents(CTextOutput &out) const;
    void writeInfCommentaries(CTextOutput &out) const;
    void writeInfExpressionAndSettings(CTextOutput &out, uint32_t mask) const;
};

// Formats a message from its translation key: the key is translated, then filled like printf.
QByteArray CmtdMessage(const char *key, ...);

// The path without its extension (text behind the last "." of the file name).
QByteArray CmtdBasePath(const char *path);
// base + extension; where only the upper-case variant exists (recorders that write ".CFG"),
// that one. Case matters on the engineer's Linux machine but not on the recorder's.
QByteArray CmtdSiblingPath(const QByteArray &base, const char *extension);
