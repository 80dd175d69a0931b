// Random sequences of changes, exports and imports, beside a small model of the rules that shares nothing
// with the worker: the same bytes, the same calls in the same order, the same camera afterwards.
#include "ImportFixture.h"

#include <iostream>
#include <map>
#include <random>

namespace
{

constexpr unsigned int kSeed = 20240611;
constexpr int kRounds = 250;

struct Number
{
    const char* text;
    qint64 written; // as an integer, and a Boolean from 1 up
};
const std::vector<Number> kNumbers = {{"0", 0},  {"1", 1},    {"2", 2},          {"03", 3},
                                      {"-5", 0}, {"0x10", 0}, {"4294967296", 0}, {"7", 7}};
const std::vector<std::pair<const char*, float>> kReals = {
    {"0.500000", 0.5f}, {"0.5", 0.5f}, {"1.250000", 1.25f}, {"-2.000000", -2.0f}, {"x", 0.0f}};
const std::vector<Number> kWords = {{"0", 0}, {"1", 1}, {"0x22", 0x22}, {"4294967295", 0xFFFFFFFF}, {"", 0}};

struct Plain
{
    QByteArray type;
    qint64 number = 0;
    float real = 0;
    QByteArray text;
    qint64 maximum = 0;
    bool writable = true;

    QByteArray shown() const
    {
        if (type == "StringReg")
            return text;
        return type == "Float" ? QByteArray::number(double(real), 'f', 6) : QByteArray::number(number);
    }
};

struct Register
{
    qint64 address;
    int length;
    bool writableNode, readable, writable;
    QByteArray bytes;
};

struct Entry
{
    QByteArray name, type, value; // of a plain feature
    bool isBlock = false;
    bool hasLength = true;
    std::vector<QByteArray> words = {};
    QByteArray wordsText() const
    {
        QByteArray text;
        for (std::size_t i = 0; i < words.size(); ++i)
            text += (i ? "," : "") + words[i];
        return text;
    }
};
using Entries = std::vector<Entry>;

// The rules, on bytes and numbers.
struct Model
{
    std::map<QByteArray, Plain> plain;
    std::map<QByteArray, Register> registers;
    bool gige = true;
    QStringList calls;
    bool pending = false;

    void call(const QString& text, const char* status)
    {
        calls.append(*status ? text + " -> " + status : text);
    }

    // Bytes in the order in which a number's digits weigh, lowest first, for a word of that register.
    std::vector<quint32> wordsOf(const Register& reg) const
    {
        std::vector<quint32> words((std::size_t(reg.length) + 3) / 4, 0);
        for (int i = 0; i < reg.length; ++i) {
            const int place = gige && reg.length == 4 ? 3 - i : i % 4;
            words[std::size_t(i / 4)] |= quint32(quint8(reg.bytes[i])) << 8 * place;
        }
        return words;
    }
    QByteArray bytesOf(const Register& reg, const std::vector<quint32>& words) const
    {
        QByteArray bytes(reg.length, '\0');
        for (int i = 0; i < reg.length; ++i)
            bytes[i] = char(words[std::size_t(i / 4)] >> 8 * (gige && reg.length == 4 ? 3 - i : i % 4));
        return bytes;
    }

    Entries exported() const
    {
        Entries entries;
        for (const auto& [name, node] : plain)
            entries.push_back({name, node.type, node.shown()});
        for (const auto& [name, reg] : registers) { // their names come behind all others
            if (!reg.readable)
                continue;
            Entry entry{name, {}, {}, true};
            for (const quint32 word : wordsOf(reg)) {
                // An export exchanges the halves of a swapped word at such an address.
                const bool exchanged = gige && reg.address % 4 != 0;
                entry.words.push_back(QByteArray::number(exchanged ? word << 16 | word >> 16 : word));
            }
            entries.push_back(entry);
        }
        return entries;
    }

    // False: the import has given up.
    bool import(const Entries& entries)
    {
        calls.clear();
        for (int cycle = 0; cycle < 11; ++cycle) {
            pending = false;
            for (const QByteArrayList& types : {QByteArrayList{"Boolean"}, QByteArrayList{"Enumeration"},
                                                QByteArrayList{"Integer", "Float", "StringReg"}})
                for (const Entry& entry : entries)
                    if (!entry.isBlock && types.contains(entry.type) && !entry.value.isEmpty())
                        applyPlain(plain.at(entry.name), entry);
            for (const Entry& entry : entries)
                if (entry.isBlock && !applyBlock(registers.at(entry.name), entry, cycle))
                    return false;
            if (!pending)
                return true;
        }
        return true;
    }

    void applyPlain(Plain& node, const Entry& entry)
    {
        static const std::map<QByteArray, QString> operations = {{"Boolean", "BoolValue"},
                                                                 {"Enumeration", "EnumValue"},
                                                                 {"Integer", "IntValueEx"},
                                                                 {"Float", "FloatValue"},
                                                                 {"StringReg", "StringValue"}};
        const QString operation = operations.at(entry.type) + " " + entry.name;
        call("Get" + operation, "");
        if (node.shown() == entry.value)
            return;
        qint64 number = entry.value.startsWith('-') ? 0 : entry.value.toLongLong(); // as an export has it
        for (const Number& known : kNumbers)
            if (entry.value == known.text)
                number = known.written;
        float real = 0;
        for (const auto& known : kReals)
            if (entry.value == known.first)
                real = known.second;
        QString argument = QString::number(number);
        if (entry.type == "Boolean")
            argument = (number = number >= 1) ? "true" : "false";
        else if (entry.type == "Float")
            argument = QString::number(double(real));
        else if (entry.type == "StringReg")
            argument = entry.value;
        const bool fits = number <= node.maximum;
        const char* status = !node.writable                ? "80000106"
                             : fits                        ? ""
                             : entry.type == "Enumeration" ? "80000101"
                                                           : "80000102";
        call("Set" + operation + " " + argument, status);
        if (*status) {
            pending = true;
            return;
        }
        node.number = number;
        node.real = real;
        node.text = entry.value;
    }

    bool applyBlock(Register& reg, const Entry& entry, int cycle)
    {
        call("GetNodeAccessMode " + entry.name, "");
        if (!reg.writableNode)
            return true;
        if (!entry.hasLength || entry.wordsText().isEmpty())
            return false;
        if (reg.address % 4 != 0)
            return true;
        const QString at = QString("Memory %1 %2").arg(reg.address).arg(reg.length);
        const char* read = reg.readable ? "" : "80000106";
        call("Read" + at, read);
        std::vector<quint32> words((std::size_t(reg.length) + 3) / 4, 0);
        if (reg.readable) {
            words = wordsOf(reg);
            QByteArrayList texts;
            for (const quint32 word : words)
                texts << QByteArray::number(word);
            if (texts.join(',') == entry.wordsText())
                return true;
        }
        pending = true;
        for (std::size_t i = 0; i < words.size() && i < entry.words.size(); ++i)
            words[i] = wordValue(entry.words[i]);
        const QByteArray bytes = bytesOf(reg, words);
        call("Write" + at + " " + bytes.toHex(), reg.writable ? "" : "80000106");
        if (reg.writable) {
            reg.bytes = bytes;
        } else if (cycle > 0) {
            if (reg.length == 4)
                call("Read" + at, read); // never equal, as the text was not
            call("GetNodeAccessMode " + entry.name, "");
        }
        return true;
    }

    static quint32 wordValue(const QByteArray& text)
    {
        for (const Number& known : kWords)
            if (text == known.text)
                return quint32(known.written);
        return text.toUInt();
    }
};

class ImportModel : public ImportFixture
{
protected:
    ImportModel()
    {
        model.plain = {{"B0", {"Boolean", 1, 0, {}, 1}},           {"B1", {"Boolean", 0, 0, {}, 1, false}},
                       {"E0", {"Enumeration", 2, 0, {}, 3}},       {"F0", {"Float", 0, 0.5f, {}, 99}},
                       {"F1", {"Float", 0, 1.25f, {}, 99, false}}, {"I0", {"Integer", 5, 0, {}, 99}},
                       {"I1", {"Integer", 1, 0, {}, 2}},           {"I2", {"Integer", 7, 0, {}, 99, false}},
                       {"S0", {"StringReg", 0, 0, "a", 99}}};
        model.registers = {{"X0", {0x1000, 4, true, true, true, QByteArray(4, '\x01')}},
                           {"X1", {0x1010, 8, false, true, true, QByteArray(8, '\x02')}},
                           {"X2", {0x1020, 5, true, true, true, QByteArray(5, '\x03')}},
                           {"X3", {0x1032, 4, true, true, true, QByteArray(4, '\x04')}},
                           {"X4", {0x1040, 4, true, true, false, QByteArray(4, '\x05')}},
                           {"X5", {0x1050, 8, true, false, true, QByteArray(8, '\x06')}},
                           {"X6", {0x1060, 12, true, true, false, QByteArray(12, '\x07')}},
                           {"X7", {0x1100, 300, true, true, true, QByteArray(300, '\x08')}}};
        QStringList nodes;
        for (const auto& [name, node] : model.plain)
            nodes << QString("<%1 Name=\"%2\"/>").arg(QString(node.type), QString(name));
        for (const auto& [name, reg] : model.registers) {
            nodes << QString("<IntReg Name=\"%1\"><Address>%2</Address><Length>%3</Length></IntReg>")
                         .arg(QString(name))
                         .arg(reg.address)
                         .arg(reg.length);
            if (!reg.readable)
                camera->makeUnreadable(reg.address, reg.length);
            if (!reg.writable)
                camera->makeUnwritable(reg.address, reg.length);
            camera->setAccessMode(name, reg.writableNode ? KX_AM_READ_WRITE : KX_AM_READ_ONLY);
        }
        describe(nodes);
        setCamera();
    }

    int below(int limit) { return int(random() % unsigned(limit)); }
    template <typename T>
    const T& oneOf(const std::vector<T>& values)
    {
        return values[std::size_t(below(int(values.size())))];
    }

    // The camera as the model has it.
    void setCamera()
    {
        for (const auto& [name, node] : model.plain) {
            if (node.type == "Boolean")
                camera->setBool(name, node.number != 0);
            else if (node.type == "Enumeration")
                camera->setEnumeration(name, quint32(node.number), {0, 1, 2, 3});
            else if (node.type == "Integer")
                camera->setInteger(name, node.number, -1000, node.maximum);
            else if (node.type == "Float")
                camera->setFloat(name, node.real);
            else
                camera->setString(name, node.text);
            camera->setAccessMode(name, node.writable ? KX_AM_READ_WRITE : KX_AM_READ_ONLY);
        }
        for (const auto& [name, reg] : model.registers)
            camera->setMemory(reg.address, reg.bytes);
    }

    void changeSomething()
    {
        for (auto& [name, node] : model.plain) {
            if (below(4) != 0)
                continue;
            node.number =
                node.type == "Integer" ? below(int(node.maximum) + 21) - 20 : below(int(node.maximum) + 1);
            node.number =
                node.type == "Enumeration" || node.type == "Boolean" ? qAbs(node.number) : node.number;
            node.real = oneOf(kReals).second;
            node.text = QByteArray(1 + below(3), char('a' + below(3)));
        }
        for (auto& [name, reg] : model.registers)
            if (below(3) == 0)
                reg.bytes[below(reg.length)] = char(below(256));
        setCamera();
    }

    Entries randomEntries()
    {
        Entries entries;
        for (int i = below(12); i > 0; --i) {
            if (below(3) == 0) {
                const auto reg = std::next(model.registers.begin(), below(int(model.registers.size())));
                Entry entry{reg->first, {}, {}, true, below(30) != 0};
                for (int words = below(20) == 0 ? 0 : 1 + below(reg->second.length / 4 + 3); words > 0;
                     --words)
                    entry.words.push_back(oneOf(kWords).text);
                entries.push_back(entry);
            } else {
                const auto node = std::next(model.plain.begin(), below(int(model.plain.size())));
                const QByteArray type = node->second.type;
                const QByteArray value = type == "Float"       ? QByteArray(oneOf(kReals).first)
                                         : type == "StringReg" ? QByteArray(below(3), 'a')
                                                               : QByteArray(oneOf(kNumbers).text);
                entries.push_back({node->first, type, value});
            }
        }
        return entries;
    }

    QByteArray text(const Entries& entries) const
    {
        QByteArray lines;
        for (const Entry& entry : entries) {
            if (!entry.isBlock) {
                lines += "<Feature>\r\n<Name>" + entry.name + "</Name>\r\n<Type>" + entry.type +
                         "</Type>\r\n<Value>" + entry.value +
                         "</Value>\r\n<Streamable>Yes</Streamable>\r\n</Feature>\r\n";
                continue;
            }
            const Register& reg = model.registers.at(entry.name);
            lines += "<ComplexFeature name=\"" + entry.name + "\"" +
                     (entry.hasLength ? " len=\"" + QByteArray::number(reg.length) + "\"" : QByteArray()) +
                     " reg=\"" + entry.name + "\">\r\n<RegValue address=\"" +
                     QByteArray::number(reg.address) + "\" variables=\"\">" + entry.wordsText() +
                     "</RegValue>\r\n</ComplexFeature>\r\n";
        }
        return lines;
    }

    void chooseTransport()
    {
        model.gige = below(2) == 0;
        device = model.gige ? gigeDevice("Cam", "S1", 7) : usbDevice("Cam", "S1", 7);
    }

    void exportAndCompare()
    {
        runExport();
        EXPECT_EQ(features(), text(model.exported()));
    }

    void importAndCompare(const QByteArray& bytes, const Entries& entries)
    {
        const bool applied_ = model.import(entries);
        import(bytes);
        QStringList calls;
        for (const QString& event : applied())
            if (!event.startsWith("log "))
                calls.append(event);
        EXPECT_EQ(calls, model.calls);
        expectSilentEnd(applied_ ? 0 : 0xE0000005);
        for (const auto& [name, reg] : model.registers)
            EXPECT_EQ(camera->memory(reg.address, reg.length), reg.bytes) << name.constData();
        exportAndCompare(); // the plain values
    }

    Model model;
    std::mt19937 random{kSeed};
};

} // namespace

TEST_F(ImportModel, WorkerAndModelAgreeOnRandomSequences)
{
    std::cout << "seed " << kSeed << ", " << kRounds << " rounds\n";
    std::vector<std::pair<QByteArray, Entries>> files;
    int writing = 0, eleven = 0, gaveUp = 0;
    for (int round = 0; round < kRounds; ++round) {
        changeSomething();
        chooseTransport();
        exportAndCompare();
        files.emplace_back(fileBytes(), model.exported());
        if (below(2) == 0) {
            const auto& file = oneOf(files);
            importAndCompare(file.first, file.second);
        } else {
            const Entries entries = randomEntries();
            importAndCompare(fittingFile(text(entries)), entries);
        }
        writing += !writes().isEmpty();
        eleven += model.pending;
        gaveUp += worker.ErrorCode() != 0;
        ASSERT_FALSE(HasFailure()) << "in round " << round;
    }
    // The sequences do reach what they are for.
    EXPECT_GT(writing, kRounds / 2);
    EXPECT_GT(eleven, kRounds / 10);
    EXPECT_GT(gaveUp, 5);
}
