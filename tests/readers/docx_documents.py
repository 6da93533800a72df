"""Reads the DOCX documents of a folder by python-docx and by LibreOffice: docx_documents.py FOLDER"""

import pathlib
import sys
import tempfile

import docx

import reading

MOST_COLUMNS = 28

# LibreOffice takes minutes to lay out a cell of 1 MB.
TOO_LONG_TO_PRINT = "long"


def expected_texts(rows):
    """The header row and the rows: the first columns, in reverse order."""
    titles = reading.column_titles(rows)[:MOST_COLUMNS][::-1]
    return [titles] + [[row.get(title, "") for title in titles] for row in rows]


def texts_by_python_docx(path):
    found = docx.Document(path).tables
    assert len(found) == 1, f"{path}: {len(found)} tables"
    return [[docx.table._Cell(cell, found[0]).text for cell in row.tc_lst] for row in found[0]._tbl.tr_lst]


def check_by_python_docx(path, rows):
    expected = [[reading.as_xml_reads(text) for text in row] for row in expected_texts(rows)]
    assert texts_by_python_docx(path) == expected, f"{path}: texts differ"


def is_printed_plainly(text):
    """Whether a page gives the text back as it stands: not where writing runs from right to left, where characters
    combine, or where it takes fonts that may not be there."""
    return all(ord(c) < 0x0300 for c in text)


def check_converted(path, text, rows, is_expected):
    """The cells stand in a converted document."""
    found = reading.without_layout(text)
    for cell in (cell for row in expected_texts(rows) for cell in row if is_expected(cell)):
        assert reading.without_layout(cell) in found, f"{path}: lacks {cell[:80]!r}"


def check_by_libreoffice(documents, tables):
    """What LibreOffice reads, and what it prints."""
    with tempfile.TemporaryDirectory() as target:
        for path, rows in zip(reading.convert(documents, "txt:Text (encoded):UTF8", target), tables):
            check_converted(path, path.read_text(encoding="utf-8-sig"), rows, lambda cell: True)
        for path, rows in zip(reading.convert(documents, "pdf", target), tables):
            check_converted(path, reading.pdf_raw_text(path), rows, is_printed_plainly)


def main(folder):
    tables = reading.tables(folder)
    for profile in reading.PROFILES:
        for name in tables:
            reading.check_xml_parts(pathlib.Path(folder, profile, f"{name}.docx"))
    documents = {name: pathlib.Path(folder, "standard", f"{name}.docx") for name in tables}
    for name, rows in tables.items():
        check_by_python_docx(documents[name], rows)
    printed = [name for name in tables if name != TOO_LONG_TO_PRINT]
    check_by_libreoffice([documents[name] for name in printed], [tables[name] for name in printed])


if __name__ == "__main__":
    main(sys.argv[1])
