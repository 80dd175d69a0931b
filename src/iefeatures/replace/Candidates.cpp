#include "iefeatures/replace/Candidates.h"

#include "iefeatures/console/Text.h"

#include <algorithm>

namespace companion
{
namespace
{

QString described(const ListedCamera& camera)
{
    QStringList parts;
    if (!camera.mac.isEmpty())
        parts += camera.mac;
    if (!camera.address.isEmpty())
        parts += "at " + camera.address;
    if (!camera.interfaceName.isEmpty())
        parts += "behind " + camera.interfaceName;
    return printable(camera.title() + (parts.isEmpty() ? QString() : " (" + parts.join(", ") + ')'));
}

bool isSameRecord(const ListedCamera& one, const ListedCamera& other)
{
    return one.device.nDeviceID == other.device.nDeviceID;
}

// Where an inventory has the camera, or had it once; empty: nowhere.
QString placeIn(const Inventory& inventory, const std::vector<ListedCamera>& cameras,
                const ListedCamera& camera)
{
    for (const LineMatch& match : matchLine(inventory, cameras))
        if (match.wanted && match.camera && !match.isOther && isSameRecord(*match.camera, camera))
            return '"' + match.wanted->name + "\" of " + inventory.path;
    for (const InventoryCamera& one : inventory.cameras)
        if (!camera.mac.isEmpty() && one.retired.contains(camera.mac))
            return "retired from the place of \"" + one.name + "\" of " + inventory.path;
    return {};
}

struct Objection
{
    ExitCode code = ExitWell;
    QString text; // a sentence
};

class Candidates
{
public:
    Candidates(const Inventory& inventory, const std::vector<Inventory>& neighbours,
               const InventoryCamera& wanted, const std::vector<ListedCamera>& cameras,
               const CandidateRule& rule)
        : m_inventories(neighbours), m_wanted(wanted), m_cameras(cameras), m_rule(rule)
    {
        m_inventories.insert(m_inventories.begin(), inventory);
    }

    CandidateChoice choose() const
    {
        if (!m_rule.isForced)
            for (const LineMatch& match : matchLine(m_inventories.front(), m_cameras))
                if (match.wanted && match.wanted->name == m_wanted.name && match.camera && !match.isOther)
                    return refused(ExitJobFailed, "The camera \"" + printable(m_wanted.name) +
                                                      "\" is there: " + described(*match.camera) +
                                                      "; --force replaces it all the same.");
        return m_rule.chosen ? chosenOne() : onlyOne();
    }

private:
    static CandidateChoice refused(ExitCode code, const QStringList& told) { return {{}, code, told}; }
    static CandidateChoice refused(ExitCode code, const QString& told)
    {
        return refused(code, QStringList(told));
    }

    QString knownAs(const ListedCamera& camera) const
    {
        for (const Inventory& inventory : m_inventories)
            if (const QString place = placeIn(inventory, m_cameras, camera); !place.isEmpty())
                return printable(place);
        return {};
    }

    // Of a camera that no inventory knows.
    Objection objection(const ListedCamera& camera) const
    {
        if (!m_wanted.model.isEmpty() && camera.model != m_wanted.model)
            return {ExitIncompatible, described(camera) + " is another model than \"" +
                                          printable(m_wanted.name) + "\", " + printable(m_wanted.model) +
                                          '.'};
        if (camera.device.nStatus == KX_AVAILABILITY_IN_USE)
            return {ExitJobFailed, described(camera) + " is controlled by another program."};
        if (!camera.userName.isEmpty() && !m_rule.takesNamed)
            return {ExitJobFailed, described(camera) + " has a name, \"" + printable(camera.userName) +
                                       "\"; --with and --take-named take it all the same."};
        return {};
    }

    CandidateChoice onlyOne() const
    {
        std::vector<ListedCamera> good;
        Objection last;
        QStringList told;
        for (const ListedCamera& camera : m_cameras) {
            if (camera.isNameless() || !knownAs(camera).isEmpty())
                continue;
            const Objection why = objection(camera);
            if (why.code == ExitWell) {
                good.push_back(camera);
                continue;
            }
            told += why.text;
            // A camera of another model is the lesser hope: what could be taken otherwise has the last word.
            if (last.code != ExitJobFailed)
                last = why;
        }
        if (good.size() == 1)
            return {good.front(), ExitWell, {}};
        if (good.size() > 1)
            return several(good);
        told += "There is no camera that could take the place of \"" + printable(m_wanted.name) + "\".";
        return refused(last.code == ExitWell ? ExitNoSuchCamera : last.code, told);
    }

    CandidateChoice several(const std::vector<ListedCamera>& good) const
    {
        QStringList told;
        for (const ListedCamera& camera : good)
            told += described(camera) + " could take the place.";
        told += "There are " + QString::number(good.size()) + "; --with chooses one.";
        return refused(ExitNoSuchCamera, told);
    }

    CandidateChoice chosenOne() const
    {
        std::vector<ListedCamera> found;
        std::copy_if(m_cameras.begin(), m_cameras.end(), std::back_inserter(found),
                     [&](const ListedCamera& camera) { return m_rule.chosen->fits(camera); });
        if (found.empty())
            return refused(ExitNoSuchCamera, m_rule.chosen->missing());
        if (found.size() > 1)
            return refused(ExitNoSuchCamera, m_rule.chosen->ambiguous(found));
        const ListedCamera& camera = found.front();
        if (const QString place = knownInUse(camera); !place.isEmpty())
            return refused(ExitJobFailed, described(camera) + " is " + place + '.');
        const Objection why = objection(camera);
        return why.code == ExitWell ? CandidateChoice{camera, ExitWell, {}} : refused(why.code, why.text);
    }

    // One that was retired may be taken by who says so.
    QString knownInUse(const ListedCamera& camera) const
    {
        const QString place = knownAs(camera);
        return place.startsWith('"') ? place : QString();
    }

    std::vector<Inventory> m_inventories; // the line's own first
    const InventoryCamera& m_wanted;
    const std::vector<ListedCamera>& m_cameras;
    const CandidateRule& m_rule;
};

} // namespace

CandidateChoice chooseCandidate(const Inventory& inventory, const std::vector<Inventory>& neighbours,
                                const InventoryCamera& wanted, const std::vector<ListedCamera>& cameras,
                                const CandidateRule& rule)
{
    return Candidates(inventory, neighbours, wanted, cameras, rule).choose();
}

} // namespace companion
