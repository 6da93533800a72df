#include "recovery/Converter.h"
#include "recovery/shaping/key_index.h"
#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

namespace {

constexpr ProgressShare kShare{0, 18.0};

constexpr std::size_t kKeyCell = 0;

const std::vector<std::string> kColumns{"title", "date"};
// Beyond the table's columns, and only in notes that have a text.
const std::vector<std::string> kColumnsAndText{"title", "date", "text"};

/// Joins each body with the notes of its key.
class NoteJoin {
public:
    NoteJoin(TableShaper& shaper, const RawTableObject& notes, const RawTableObject& bodies)
        : shaper_(shaper),
          notesByKey_(notes.rowList(), kKeyCell, rowCount(bodies)),
          rowsWithText_(kColumnsAndText),
          title_(columnIndex(notes, "ZTITLE")),
          modified_(columnIndex(notes, "ZMODIFICATIONDATE")),
          content_(columnIndex(bodies, "ZCONTENT")) {}

    void addBody(const Row& body) {
        const std::int64_t key = integerCell(body, kKeyCell);
        if (key <= 0) {
            shaper_.add(lostNote(body), Origin::kCarved);
            return;
        }
        // A note that is found makes the row a live one, also when the body was carved.
        for (const KeyIndex::Entry& match : notesByKey_.find(key)) shaper_.add(joined(match.row, body), Origin::kLive);
    }

private:
    /// A body whose key was lost: its note cannot be found any more.
    Dictionary lostNote(const Row& body) const {
        Dictionary row = newRow(cellOf(body, content_));
        row.set("date", Converter::formatedStringFromDate(Converter::dateWithSqliteTimeStamp(0)));
        return row;
    }

    Dictionary joined(const Row& note, const Row& body) const {
        Dictionary row = newRow(joinedText(note, body));
        if (const auto title = cellOf(note, title_)) row.set("title", *title);
        if (const auto modified = cellOf(note, modified_)) {
            row.set("date", Converter::getTimeToShowWithTimestamp(*modified));
        }
        return row;
    }

    /// The length of the note, not of the body, decides whether the text is shown: what has always been left out of
    /// the table stays out.
    std::optional<std::string_view> joinedText(const Row& note, const Row& body) const {
        if (note.count() <= content_) return std::nullopt;
        return cellOf(body, content_);
    }

    Dictionary newRow(std::optional<std::string_view> text) const {
        if (!text) return shaper_.newRow();
        Dictionary row = rowsWithText_.newRow();
        row.set("text", *text);
        return row;
    }

    TableShaper& shaper_;
    KeyIndex notesByKey_;
    RowFactory rowsWithText_;
    std::size_t title_;
    std::size_t modified_;
    std::size_t content_;
};

}  // namespace

std::shared_ptr<CustomTableObject> shapeNotes(const Source& source) {
    TableShaper shaper(source, "Notes", kColumns);
    const RawTableObject* notes = shaper.rawTable("ZNOTE");
    const RawTableObject* bodies = shaper.rawTable("ZNOTEBODY");
    if (notes == nullptr || bodies == nullptr) return shaper.result();
    NoteJoin join(shaper, *notes, *bodies);
    shaper.walk(*bodies, kShare, [&](const Row& body, Origin) { join.addBody(body); });
    return shaper.result();
}

}  // namespace ZkMobileBackup::shaping
