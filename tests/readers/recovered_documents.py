"""Reads what ./recover wrote of the sample backup, every type by its reader: recovered_documents.py FOLDER

Every document must have a certain live and a certain deleted record of its application: recovery, export and the
reader's view of the file are tried in one.
"""

import pathlib
import sys
import tempfile
import xml.etree.ElementTree

import openpyxl

import bundle_documents
import docx_documents
import reading
import xlsx_documents

XHTML = "{http://www.w3.org/1999/xhtml}"

# By application a live and a deleted record: texts that stand in one row together. tests/support/SampleDatabases.cpp
# has them; none depends on the time zone.
RECORDS = {
    "Contacts": (("Amelia Hartley", "Northwind Bakery", "+1-555-010-0123"), ("ليلى حداد", "مكتبة النور")),
    "Message": (("さくら 山本", "明日の会議は午後三時からです。 (4)"), ("明日の会議は午後三時からです。 (28)",)),
    "Callhistory": (("さくら 山本", "+819055500175", "2 hours"), ("さくら 山本", "+819055500175", "10 minutes")),
    "Calendar": (("Choir rehearsal 🎶", "Town hall"), ("Cancelled trip to the lake", "Town hall")),
    "Reminder": (("Acheter des timbres", "Completed"), ("Deleted: return the library books", "Uncompleted")),
    "Note": (("Shopping", "Milk, eggs, flour and a lemon"),
             ("Deleted note: the surprise party is on Friday at eight 🎈",)),
    "SafariBookmarks": (("Weather", "https://weather.example.com/today?unit=c&lang=en"),
                        ("Deleted: flights to Lisbon", "https://flights.example.com/lisbon")),
}


def html_texts(path):
    rows = xml.etree.ElementTree.parse(path).iter(XHTML + "tr")
    return [["".join(cell.itertext()) for cell in row] for row in rows]


def xlsx_texts(path):
    sheet, = openpyxl.load_workbook(path).worksheets
    return xlsx_documents.texts_of(sheet)


def each_by(read):
    return lambda paths: [read(path) for path in paths]


def converted(format, read):
    """Reads documents after LibreOffice converted them."""
    def read_all(paths):
        with tempfile.TemporaryDirectory() as target:
            return [read(path) for path in reading.convert(paths, format, target)]
    return read_all


# By type what gives the rows of texts of each of some documents.
READERS = {
    "html": each_by(html_texts),
    "docx": each_by(docx_documents.texts_by_python_docx),
    "xlsx": each_by(xlsx_texts),
    "numbers": converted(bundle_documents.CSV, bundle_documents.spreadsheet_texts),
    "pages": converted("fodt", bundle_documents.text_document_texts),
}


def has_record(rows, record):
    return any(all(any(text in cell for cell in row) for text in record) for row in rows)


def main(folder):
    for extension, read in READERS.items():
        paths = [pathlib.Path(folder, f"{name}.{extension}") for name in RECORDS]
        for path in paths:
            assert path.is_file(), f"{path}: not there"
        for path, rows, records in zip(paths, read(paths), RECORDS.values()):
            for record in records:
                assert has_record(rows, record), f"{path}: lacks {record}"


if __name__ == "__main__":
    main(sys.argv[1])
