"""Reads the Numbers and Pages documents of a folder by LibreOffice: bundle_documents.py FOLDER"""

import csv
import pathlib
import sys
import tempfile
import xml.etree.ElementTree
import zipfile

import reading

CSV = "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,true,false"
TABLE = "{urn:oasis:names:tc:opendocument:xmlns:table:1.0}"


def expected_texts(rows):
    titles = reading.column_titles(rows)
    return [titles] + [[row.get(title, "") for title in titles] for row in rows]


def without_empty_ends(texts):
    """Rows and cells as they are listed where empty ones at an end count for nothing."""
    rows = [list(row) for row in texts]
    for row in rows:
        while row and not row[-1]:
            row.pop()
    while rows and not rows[-1]:
        rows.pop()
    return rows


def check_texts(document, found, expected):
    found, expected = without_empty_ends(found), without_empty_ends(expected)
    assert len(found) == len(expected), f"{document}: {len(found)} rows instead of {len(expected)}"
    for position, (row, wanted) in enumerate(zip(found, expected)):
        assert row == wanted, f"{document}: row {position} reads {row!r:.300} instead of {wanted!r:.300}"


def spreadsheet_texts(sheet):
    with open(sheet, encoding="utf-8", newline="") as file:
        return [[reading.as_xml_reads(text) for text in row] for row in csv.reader(file)]


def check_spreadsheet(sheet, rows):
    check_texts(sheet, spreadsheet_texts(sheet), [[reading.as_xml_reads(text) for text in row] for row in expected_texts(rows)])


def squeezed(text):
    return " ".join(text.split())


def text_document_texts(document):
    """The texts of the first table; blanks and line ends are single blanks."""
    table = next(xml.etree.ElementTree.parse(document).iter(TABLE + "table"))
    return [[squeezed(" ".join(cell.itertext())) for cell in row.iter(TABLE + "table-cell")]
            for row in table.iter(TABLE + "table-row")]


def check_text_document(document, rows):
    check_texts(document, text_document_texts(document), [[squeezed(text) for text in row] for row in expected_texts(rows)])


def check_pdf(pdf, rows):
    printed = reading.without_layout(reading.pdf_raw_text(pdf))
    for text in (text for row in expected_texts(rows) for text in row):
        assert reading.without_layout(text) in printed, f"{pdf}: lacks {text!r}"


def check_parts(folder, name, extension):
    """The parts are well-formed, and the same in every profile."""
    documents = [pathlib.Path(folder, profile, f"{name}.{extension}") for profile in reading.PROFILES]
    for document in documents:
        reading.check_xml_parts(document)
    parts = {zipfile.ZipFile(document).read("index.xml") for document in documents}
    assert len(parts) == 1, f"{name}.{extension}: profiles differ"


def main(folder):
    csv.field_size_limit(1 << 24)
    tables = reading.tables(folder)
    for name in tables:
        check_parts(folder, name, "numbers")
        check_parts(folder, name, "pages")
    numbers = [pathlib.Path(folder, "standard", f"{name}.numbers") for name in tables]
    pages = [pathlib.Path(folder, "standard", f"{name}.pages") for name in tables]
    printed = [name for name in tables if name[0].isdigit()]  # the others have texts that their rows cut off
    with tempfile.TemporaryDirectory() as target:
        for sheet, rows in zip(reading.convert(numbers, CSV, target), tables.values()):
            check_spreadsheet(sheet, rows)
        for document, rows in zip(reading.convert(pages, "fodt", target), tables.values()):
            check_text_document(document, rows)
        pdfs = reading.convert([path for path in pages if path.stem in printed], "pdf", target)
        for name, pdf in zip(printed, pdfs):
            check_pdf(pdf, tables[name])


if __name__ == "__main__":
    main(sys.argv[1])
