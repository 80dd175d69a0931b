#include "jobs/nodes/RegisterWords.h"

#include "jobs/rules/ImportRules.h"

#include <QtEndian>

#include <algorithm>

namespace ie
{

quint64 RegisterWords::wholeWords(qint64 length)
{
    return (quint64(std::max<qint64>(length, 0)) + 3) / 4;
}

RegisterWords::RegisterWords(qint64 length, bool isGigE)
    : m_length(length), m_isSwapped(isGigE && length == 4)
{
    if (length > kMaximumLength)
        return;
    m_count = int(wholeWords(length));
    m_words = m_scratch;
    if (length > kScratchSize) {
        m_heap.reset(allocateZeroed(std::size_t(m_count) * 4));
        m_words = static_cast<quint32*>(m_heap.get());
    }
}

quint32 RegisterWords::raw(int index) const
{
    return qFromLittleEndian(m_words[index]);
}

void RegisterWords::setRaw(int index, quint32 word)
{
    m_words[index] = qToLittleEndian(word);
}

quint32 RegisterWords::word(int index) const
{
    return m_isSwapped ? qbswap(raw(index)) : raw(index);
}

void RegisterWords::setWord(int index, quint32 word)
{
    setRaw(index, m_isSwapped ? qbswap(word) : word);
}

QVector<quint32> RegisterWords::words() const
{
    QVector<quint32> words(m_count);
    for (int i = 0; i < m_count; ++i)
        words[i] = word(i);
    return words;
}

QString RegisterWords::text() const
{
    return wordsText(words());
}

void RegisterWords::take(const RegisterValue& entry)
{
    // Word 0 takes a converted value even where the length leaves no word: the scratch has it. Meant.
    const int reach = entry.to.isEmpty() ? m_count : std::max(m_count, 1);
    forEachImportedWord(entry, reach,
                        [this](int index, const QString& text) { setWord(index, importedWord(text).value); });
}

qint64 forEachImportedWord(const RegisterValue& entry, int words,
                           const std::function<void(int, const QString&)>& take)
{
    if (!entry.to.isEmpty()) {
        if (words > 0)
            take(0, entry.to);
        return 1;
    }
    // Part by part, no further than the register reaches: all parts of a huge text would not fit into memory.
    const QString& text = entry.content;
    for (int i = 0, begin = 0; i < words && begin <= text.size(); ++i) {
        const int comma = text.indexOf(',', begin);
        const int end = comma < 0 ? text.size() : comma;
        take(i, text.mid(begin, end - begin));
        begin = end + 1;
    }
    return qint64(text.count(',')) + 1;
}

} // namespace ie
