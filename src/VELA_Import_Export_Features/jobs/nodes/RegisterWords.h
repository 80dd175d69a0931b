// The bytes of one register, and the words that a features file has of them.
#pragma once

#include "jobs/file/FeaturesFile.h"
#include "jobs/rules/JobMemory.h"

#include <QString>
#include <QVector>

#include <functional>

namespace ie
{

// Whole words, zero-filled once: what a reading leaves behind its bytes stays. Words are little-endian bytes,
// and on GigE those of a register of exactly four bytes stand in files the other way round.
class RegisterWords
{
public:
    // Registers up to this many bytes need no allocation.
    static constexpr qint64 kScratchSize = 256;
    // More is no register of a camera; it counts as an allocation that failed.
    static constexpr qint64 kMaximumLength = 16 * 1024 * 1024;

    // 32-bit words that hold a length in bytes; none for a negative one.
    static quint64 wholeWords(qint64 length);

    RegisterWords(qint64 length, bool isGigE);

    // False: no memory, or longer than kMaximumLength. Nothing else may be asked then.
    bool isAllocated() const { return m_words != nullptr; }
    qint64 length() const { return m_length; } // bytes
    int count() const { return m_count; }      // words
    bool isSwapped() const { return m_isSwapped; }
    void* data() { return m_words; }

    // The word at `index` as the bytes have it; index 0 is good for every length.
    quint32 raw(int index) const;
    void setRaw(int index, quint32 word);
    // The same as files have it.
    quint32 word(int index) const;
    void setWord(int index, quint32 word);
    QVector<quint32> words() const;
    // All words as files have them.
    QString text() const;

    // What an import writes of an entry of a file.
    void take(const RegisterValue& entry);

private:
    RegisterWords(const RegisterWords&) = delete;
    RegisterWords& operator=(const RegisterWords&) = delete;

    const qint64 m_length;
    const bool m_isSwapped;
    int m_count = 0;
    quint32 m_scratch[kScratchSize / 4] = {};
    MemoryBlock m_heap;
    quint32* m_words = nullptr;
};

// Hands out the texts of the words that an import writes of a register entry, as far as a register of `words`
// words reaches, and answers how many the file gives: more are ignored, and words that it does not give keep
// what the camera has.
qint64 forEachImportedWord(const RegisterValue& entry, int words,
                           const std::function<void(int index, const QString& text)>& take);

} // namespace ie
