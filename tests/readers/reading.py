"""What the scripts share that read documents by programs of others: LibreOffice, poppler, xmllint."""

import json
import pathlib
import subprocess
import tempfile
import unicodedata
import zipfile

PROFILES = ("legacy", "standard")


def tables(folder):
    """What the tables hold: by name a list of rows, each from column title to text."""
    return json.loads((pathlib.Path(folder) / "tables.json").read_text(encoding="utf-8"))


def column_titles(rows):
    """Every title of every row, in the order in which they are first seen."""
    return list(dict.fromkeys(title for row in rows for title in row))


def as_xml_reads(text):
    """A text as it comes back from an XML file: line ends are line feeds."""
    return text.replace("\r\n", "\n").replace("\r", "\n")


def convert(paths, format, target):
    """Converts documents by one run of LibreOffice; returns the new paths."""
    with tempfile.TemporaryDirectory() as profile:
        subprocess.run(
            ["soffice", f"-env:UserInstallation=file://{profile}", "--headless", "--convert-to", format,
             "--outdir", str(target), *map(str, paths)],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    extension = format.split(":")[0]
    converted = [pathlib.Path(target) / f"{pathlib.Path(path).stem}.{extension}" for path in paths]
    for path in converted:
        assert path.is_file(), f"LibreOffice could not open what should have become {path}"
    return converted


def pdf_raw_text(path):
    return subprocess.run(["pdftotext", "-raw", str(path), "-"], check=True, capture_output=True).stdout.decode()


def without_layout(text):
    """A text without blanks, line ends and marks that only steer the layout, so that wrapped texts can be compared."""
    return "".join(c for c in unicodedata.normalize("NFKC", text)
                   if not c.isspace() and unicodedata.category(c) not in ("Cc", "Cf"))


def check_xml_parts(document):
    """xmllint accepts every part of the package."""
    with tempfile.TemporaryDirectory() as folder, zipfile.ZipFile(document) as package:
        assert package.testzip() is None, f"{document}: damaged"
        package.extractall(folder)
        parts = [str(path) for path in pathlib.Path(folder).rglob("*") if path.is_file()]
        assert parts, f"{document}: no parts"
        run = subprocess.run(["xmllint", "--noout", "--huge", *parts], capture_output=True)
        assert run.returncode == 0, f"{document}: {run.stderr.decode()}"
