"""Reads the XLSX documents of a folder by openpyxl and by LibreOffice: xlsx_documents.py FOLDER"""

import csv
import pathlib
import sys
import tempfile

import openpyxl

import reading

csv.field_size_limit(1 << 24)
CSV_OF_UTF8 = "csv:Text - txt - csv (StarCalc):44,34,76"


def expected_texts(rows):
    titles = reading.column_titles(rows)
    return [[reading.as_xml_reads(text) for text in row]
            for row in [titles] + [[row.get(title, "") for title in titles] for row in rows]]


def texts_of(sheet):
    return [[cell or "" for cell in row] for row in sheet.iter_rows(values_only=True)]


def check_by_openpyxl(path, rows):
    sheet, = openpyxl.load_workbook(path).worksheets
    assert sheet.title == "Page 1", f"{path}: {sheet.title}"
    assert texts_of(sheet) == expected_texts(rows), f"{path}: texts differ"
    assert sheet.sheet_format.baseColWidth == 21, f"{path}: column width"


def check_csv(path, rows):
    with open(path, newline="", encoding="utf-8") as file:
        texts = list(csv.reader(file))
    expected = expected_texts(rows)
    while not any(expected[-1]):  # LibreOffice does not write them
        expected.pop()
    assert texts == expected, f"{path}: texts differ"


def main(folder):
    tables = reading.tables(folder)
    for profile in reading.PROFILES:
        documents = [pathlib.Path(folder, profile, f"{name}.xlsx") for name in tables]
        for document in documents:
            reading.check_xml_parts(document)
        with tempfile.TemporaryDirectory() as target:
            for path, rows in zip(reading.convert(documents, CSV_OF_UTF8, target), tables.values()):
                check_csv(path, rows)
    for name, rows in tables.items():
        check_by_openpyxl(pathlib.Path(folder, "standard", f"{name}.xlsx"), rows)


if __name__ == "__main__":
    main(sys.argv[1])
