#include "IntegrityCheck.h"

#include "Catalogues.h"
#include "LooseRows.h"
#include "ModelIds.h"
#include "ProxyFiles.h"
#include "Queries.h"
#include "RoomyCache.h"
#include "RowIdCollection.h"
#include "RowIdIndexes.h"
#include "RowQuestions.h"
#include "Schema.h"
#include "StrayFiles.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

using IntegrityCheck::Depth;

/// Those of DatabaseFiles::kTogether, in the order of Connection::kSchemas.
constexpr std::array kTogether{
    Schema::Database::Library, Schema::Database::Properties, Schema::Database::ImageProxies};

QList<Finding> damageOf(Connection& connection, Schema::Database database, Depth depth)
{
    const auto* const place = std::ranges::find(kTogether, database);
    const auto index = static_cast<std::size_t>(place - kTogether.begin());
    const std::string check = depth == Depth::Rows ? ".quick_check(1)" : ".integrity_check(1)";
    const std::string sql = std::string("PRAGMA ") + Connection::kSchemas.at(index) + check;
    const QString found = Sql::firstText(connection, sql.c_str());
    if (found == "ok"_L1) {
        return {};
    }
    return {{u"A database is damaged: %1."_s.arg(found), Schema::filePath(database), false}};
}

/// A question whose first column names what is wrong, and the sentence that it goes into.
struct Question {
    const char* sql{nullptr};
    const char* sentence{nullptr}; ///< %1 is the first finding, %2 how many there are
    bool isDerived{false};         ///< it follows from other rows
    Schema::Database database{Schema::Database::Library};
};

constexpr Question kQuestions[] = {
    {"SELECT v.modelId FROM RKVersion v JOIN RKMaster m ON m.uuid = v.masterUuid"
     // A master stays where another photo that shows it is not in the trash. The signs keep SQLite
     // from going to nearly all photos by way of the index of the trash.
     " WHERE v.isInTrash <> m.isInTrash AND NOT (v.isInTrash <> 0 AND v.showInLibrary <> 0"
     " AND EXISTS (SELECT 1 FROM RKVersion o WHERE +o.showInLibrary <> 0 AND +o.isInTrash = 0"
     " AND (o.masterUuid = m.uuid OR o.rawMasterUuid = m.uuid OR o.nonRawMasterUuid = m.uuid)))",
     "%2 photo version(s) contradict their masters about being in the trash, the first is %1."},
    {"SELECT v.modelId FROM RKVersion v JOIN RKMaster m ON m.uuid = v.masterUuid"
     " WHERE v.masterId IS NOT m.modelId",
     "%2 photo version(s) name their masters by a wrong id, the first is %1.",
     true},
    {"SELECT v.modelId FROM RKVersion v WHERE (v.hasKeywords <> 0) <> EXISTS"
     " (SELECT 1 FROM RKKeywordForVersion k WHERE k.versionId = v.modelId)",
     "%2 photo version(s) are wrong about having keywords, the first is %1.",
     true},
    // One of which no version is left leads nowhere (LooseRows).
    {"SELECT m.modelId FROM RKMaster m LEFT JOIN RKVersion v ON v.uuid = m.originalVersionUuid"
     " AND v.versionNumber = 0 WHERE v.modelId IS NULL"
     " AND EXISTS (SELECT 1 FROM RKVersion o WHERE o.masterUuid = m.uuid)",
     "%2 master(s) have no original version, the first is %1."},
    {"SELECT v.modelId FROM RKVersion v JOIN RKMaster m ON m.uuid = v.masterUuid"
     " LEFT JOIN prox.RKImageProxyState p ON p.versionUuid = v.uuid"
     " WHERE v.versionNumber = 1 AND p.modelId IS NULL",
     "%2 photo(s) have no record of their pictures, the first is %1.",
     false,
     Schema::Database::ImageProxies},
    {"SELECT p.modelId FROM prox.RKImageProxyState p JOIN RKVersion v ON v.uuid = p.versionUuid"
     " WHERE p.versionId IS NOT v.modelId",
     "%2 record(s) of pictures name their photos by a wrong id, the first is %1.",
     true,
     Schema::Database::ImageProxies},
    {RowQuestions::kLostTexts,
     "%2 text(s) of photos name a string that is not there, the first is %1.",
     false,
     Schema::Database::Properties},
    {"SELECT p.modelId FROM prop.RKOtherProperty p JOIN RKVersion v ON v.modelId = p.versionId"
     " LEFT JOIN prop.RKUniqueString s ON s.modelId = p.stringId"
     " WHERE p.stringId IS NOT NULL AND s.modelId IS NULL",
     "%2 other text(s) of photos name a string that is not there, the first is %1.",
     false,
     Schema::Database::Properties},
    {RowQuestions::kLostCameraTexts,
     "%2 camera text(s) of photos name a string that is not there, the first is %1.",
     false,
     Schema::Database::Properties},
    {RowQuestions::kMiscountedAlbums,
     "%2 album(s) miscount their photos, the first is \"%1\".",
     true},
    {RowQuestions::kMiscountedEvents,
     "%2 event(s) miscount their photos, the first is \"%1\".",
     true},
};

QList<Finding> asked(Connection& connection, const Question& question)
{
    const QStringList found = Sql::texts(connection, question.sql);
    if (found.isEmpty()) {
        return {};
    }
    const QString sentence =
        QString::fromLatin1(question.sentence).arg(found.first(), QString::number(found.size()));
    return {{sentence, Schema::filePath(question.database), question.isDerived}};
}

/// The database that a table is in, or that a sentence tells of.
QString databaseOf(const QString& table)
{
    if (table.contains("RKImageProxyState"_L1)) {
        return Schema::filePath(Schema::Database::ImageProxies);
    }
    const bool ofProperties = table.contains("RKIptc"_L1) || table.contains("RKOther"_L1) ||
                              table.contains("RKExif"_L1) || table.contains("RKUnique"_L1);
    return Schema::filePath(ofProperties ? Schema::Database::Properties
                                         : Schema::Database::Library);
}

QList<Finding> laggingCounters(Connection& connection)
{
    QList<Finding> findings;
    const Connection::Snapshot snapshot(connection);
    const QList<ModelIds::Lagging> tables = ModelIds::lagging(connection);
    for (const ModelIds::Lagging& table : tables) {
        if (table.counter && table.isOfObjects) {
            findings.append({ModelIds::describeCounter(table),
                             Schema::filePath(Schema::Database::Library),
                             true});
        }
    }
    return findings;
}

QList<Finding> mismatchesOf(Connection& connection, const RowIdCollection::Source& source)
{
    QList<Finding> findings;
    const QStringList mismatches = RowIdIndexes::mismatches(connection, source);
    for (const QString& mismatch : mismatches) {
        findings.append({mismatch, databaseOf(mismatch), true});
    }
    return findings;
}

/// About the rows of whole databases.
void addQuestionsOfRows(Connection& connection, std::vector<ParallelQuestions::Question>& questions)
{
    for (const Question& question : kQuestions) {
        questions.emplace_back([&question](Connection& by) { return asked(by, question); });
    }
    questions.emplace_back(laggingCounters);
    if (Schema::mismatches(connection).isEmpty()) { // older schemas lack columns that are indexed
        for (const RowIdCollection::Source& source : RowIdCollection::sources()) {
            questions.emplace_back([&source](Connection& by) { return mismatchesOf(by, source); });
        }
    }
}

/// Thumbnails and previews that the databases name; masters are counted as missing elsewhere.
void checkProxyFiles(Connection& connection, QStringList& problems)
{
    const QList<ProxyFiles::Missing> missing = ProxyFiles::missing(connection);
    if (!missing.isEmpty()) {
        problems << u"%1 preview(s) or thumbnail(s) are missing, the first is %2."_s
                        .arg(missing.size())
                        .arg(missing.first().relativePath);
    }
}

/// `sentence` has places for how many there are and for the first of them.
void tellStrays(const QStringList& strays, const QString& sentence, QStringList& problems)
{
    if (!strays.isEmpty()) {
        problems << sentence.arg(strays.size()).arg(strays.first());
    }
}

void tellDamagedCatalogue(Connection& connection, QStringList& problems)
{
    const QString damaged = Catalogues::damage(connection.packagePath());
    if (!damaged.isNull()) {
        problems << damaged;
    }
}

QStringList sentencesOf(const QList<Finding>& findings)
{
    QStringList sentences;
    for (const Finding& finding : findings) {
        sentences << finding.what;
    }
    return sentences;
}

/// Rows that lead nowhere, pictures that are missing, and files in Masters that belong to no photo.
QStringList looseEnds(Connection& connection, const NamedFiles& namedFiles)
{
    QStringList problems = sentencesOf(LooseRows::findings(connection));
    checkProxyFiles(connection, problems);
    tellStrays(StrayFiles::inMasters(connection, namedFiles),
               u"%1 file(s) in Masters belong to no photo, the first is %2."_s,
               problems);
    return problems;
}

} // namespace

QList<Finding> IntegrityCheck::ofForm(Connection& connection, Depth depth)
{
    QList<Finding> damages;
    for (const Schema::Database database : kTogether) {
        damages += damageOf(connection, database, depth);
    }
    return damages;
}

IntegrityCheck::FormAndRows IntegrityCheck::ofFormAndRows(
    Connection& connection, Depth depth, const std::vector<ParallelQuestions::Question>& more)
{
    std::vector<ParallelQuestions::Question> questions;
    questions.reserve(kTogether.size());
    for (const Schema::Database database : kTogether) {
        questions.emplace_back(
            [database, depth](Connection& by) { return damageOf(by, database, depth); });
    }
    addQuestionsOfRows(connection, questions);
    questions.insert(questions.end(), more.begin(), more.end());
    const std::vector<ParallelQuestions::Answer> answers =
        ParallelQuestions::ask(connection, questions, kTogether.size());

    FormAndRows told;
    const auto firstOfRows = answers.begin() + kTogether.size();
    for (auto answer = answers.begin(); answer != firstOfRows; ++answer) {
        told.findings += answer->findings;
    }
    told.isWhole = told.findings.isEmpty();
    if (!told.isWhole) {
        return told;
    }
    for (const ParallelQuestions::Answer& answer : answers) {
        if (answer.failure) {
            std::rethrow_exception(answer.failure);
        }
        told.findings += answer.findings;
    }
    return told;
}

QStringList IntegrityCheck::ofDatabases(Connection& connection, Depth depth)
{
    const RoomyCache cache(connection);
    return sentencesOf(ofFormAndRows(connection, depth).findings);
}

QStringList IntegrityCheck::ofCrash(Connection& connection, const NamedFiles& namedFiles)
{
    QStringList problems = looseEnds(connection, namedFiles);
    tellStrays(StrayFiles::foldersOfNoPhoto(connection, namedFiles),
               u"%1 folder(s) hold files that belong to no photo, the first is %2."_s,
               problems);
    tellStrays(StrayFiles::sidecarsOfNothing(connection),
               u"%1 sidecar(s) belong to no album or folder, the first is %2."_s,
               problems);
    tellDamagedCatalogue(connection, problems);
    return problems;
}

QStringList IntegrityCheck::problems(Connection& connection, const NamedFiles& namedFiles)
{
    const RoomyCache cache(connection);
    const FormAndRows databases = ofFormAndRows(connection, Depth::Indexes);
    QStringList problems = sentencesOf(databases.findings);
    if (databases.isWhole) {
        problems << looseEnds(connection, namedFiles);
    }
    tellDamagedCatalogue(connection, problems);
    return problems;
}
