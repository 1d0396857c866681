"""docs/store-layout.md, held against the tables of the records and against what their code looks up."""

import re
import unittest
from typing import NamedTuple

from surface import ROOT

HEADING = re.compile(r"^## `([^`]+)`", re.MULTILINE)
ROW = re.compile(r"^\| `([\w.]+)` \| (\w+) \| (.+) \| ([^|]+) \| ([^|]+) \|$")
# A list of rows in the dump: the record, what is done, and in quotes the maps below its element.
LIST = re.compile(r"^(.+?) (load|save)\b(.*)$")
BELOW = re.compile(r'\s*"(\w+)"\s*')
# Records that have no rows: their code looks each key up.
WITHOUT_ROWS = {"system settings", "ntp", "console gateway", "https certificate"}

LOOK_UP = re.compile(
    r"\b(?:cfg_get_by_path|cfg_get_child_by_path|cfg_map_[gs]et_\w+|cfg_map_delete_key|cfg_add_mapelem|"
    r"cfg_simple_get_mapelem|need_list|need_map|load_below|store_below|store_sub_map|load_sub_map|each_entry|"
    r"new_id_list|append_new_element|add_new_element|element_to_save|collection_count|collection_entry|"
    r"get_string|get_int|set_string|set_int)(?:<[^<>;]*>)?\([^;\"]*\"([\w.]+)\"")
PLACE = re.compile(r'\{"([\w.]+)", CFG_\w+\}')


class Key(NamedTuple):
    """One row of the page."""
    place: str
    path: str
    kind: str
    meaning: str
    readers: list
    writers: list


def page_keys(text):
    place = None
    for line in text.splitlines():
        heading = HEADING.match(line)
        place = heading.group(1) if heading else place
        row = ROW.match(line)
        if row:
            path, kind, meaning, *records = row.groups()
            readers, writers = ([] if cell.strip() == "–" else cell.strip().split(", ") for cell in records)
            yield Key(place, path, kind, meaning, readers, writers)
        elif line.startswith("| `"):
            raise AssertionError(f"a row that nobody can read: {line}")


def table_keys(text):
    """(record, path below its element, kind, "load" or "save") of every row of the dump."""
    for line in text.splitlines()[1:]:
        if line and not line.startswith(" "):
            record, done, rest = LIST.match(line).groups()
            below = [part.group(1) for part in map(BELOW.fullmatch, rest.split(",")) if part]
        elif line:
            key, kind = line.split()[:2]
            yield record, ".".join(below + [key]), kind, done


def lacking(page, dump):
    """What the tables have and the page does not tell."""
    told = {(record, key.path, key.kind, done) for key in page_keys(page)
            for done, records in (("load", key.readers), ("save", key.writers)) for record in records}
    return sorted(set(table_keys(dump)) - told)


def sources():
    return "".join(path.read_text() for path in sorted((ROOT / "src").rglob("*.[ch]pp")))


def names(page):
    """Every name that the page has for a key or a list: the words of its headings and rows."""
    words = " ".join(HEADING.findall(page)) + " " + " ".join(key.path for key in page_keys(page))
    return set(re.findall(r"\w+", words))


class StoreLayout(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.page = (ROOT / "docs/store-layout.md").read_text()
        cls.dump = (ROOT / "tests/golden/tables.txt").read_text()
        cls.keys = list(page_keys(cls.page))

    def test_the_page_tells_of_every_key_of_every_record_who_reads_and_who_writes_it(self):
        self.assertGreater(len(set(table_keys(self.dump))), 300)
        self.assertEqual(lacking(self.page, self.dump), [])

    def test_no_key_stands_twice_in_one_place(self):
        places = [(key.place, key.path) for key in self.keys]
        self.assertEqual(len(places), len(set(places)), [place for place in places if places.count(place) > 1])

    def test_every_record_that_the_page_names_exists(self):
        records = {record for record, *_ in table_keys(self.dump)} | WITHOUT_ROWS
        named = {record for key in self.keys for record in key.readers + key.writers}
        self.assertEqual(sorted(named - records), [])

    def test_every_key_of_the_page_is_one_that_the_code_knows(self):
        known = {word for text in re.findall(r'"([\w.]+)"', sources()) for word in text.split(".")}
        self.assertEqual(sorted({key.path for key in self.keys if key.path.split(".")[-1] not in known}), [])

    def test_no_key_has_another_kind_than_in_the_tables_of_its_records(self):
        kinds = {}
        for record, path, kind, _ in table_keys(self.dump):
            kinds.setdefault((record, path), set()).add(kind)
        wrong = [(key.place, key.path, key.kind) for key in self.keys for record in key.readers + key.writers
                 if key.kind not in kinds.get((record, key.path), {key.kind})]
        self.assertEqual(wrong, [])

    def test_every_path_that_the_code_looks_up_is_on_the_page(self):
        looked_up = {word for path in LOOK_UP.findall(sources()) for word in path.split(".")}
        self.assertGreater(len(looked_up), 40)
        self.assertEqual(sorted(looked_up - names(self.page)), [])

    def test_every_list_and_map_of_a_new_store_is_on_the_page(self):
        table = (ROOT / "platform/config/layout.cpp").read_text()
        places = PLACE.findall(table.split("root_places[]", 1)[1].split("};", 1)[0])
        self.assertGreater(len(places), 30)
        told = {heading.replace("[]", "") for heading in HEADING.findall(self.page)}
        told |= {f"{key.place}.{key.path}" for key in self.keys}
        prefixes = {".".join(path.split(".")[:length]) for path in told for length in range(1, 9)}
        self.assertEqual([path for path in places if path not in prefixes], [])

    def test_what_new_entries_begin_with_is_on_the_page(self):
        table = (ROOT / "platform/config/layout.cpp").read_text()
        collections = re.findall(r'\{"([\w.*]+)", (\w+)\}', table.split("collections[]", 1)[1].split("};", 1)[0])
        self.assertGreater(len(collections), 0)
        told = {(key.place, key.path) for key in self.keys}
        for path, array in collections:
            entry = path.replace(".*", "[]") + "[]"
            places = PLACE.findall(table.split(f"{array}[]", 1)[1].split("};", 1)[0])
            self.assertGreater(len(places), 0)
            self.assertEqual([place for place in places if (entry, place) not in told], [])

    def test_every_row_says_what_its_key_means(self):
        self.assertEqual([key for key in self.keys if len(key.meaning) < 2], [])
        self.assertEqual({key.kind for key in self.keys} - {
            "map", "list", "string", "int", "bool", "blob", "reference"}, set())


class PagesThatLack(unittest.TestCase):
    """That a page which is out of date is noticed."""

    DUMP = 'Keys.\n\nsite load\n  name  string  mandatory\n\nsite save, "more"\n  seats  int  always written\n'
    PAGE = ("## `sites[]`\n| key | kind | meaning | read by | written by |\n|---|---|---|---|---|\n"
            "| `name` | string | Name | site | – |\n| `more.seats` | int | Seats | – | site |\n")

    def test_a_page_that_tells_all_lacks_nothing(self):
        self.assertEqual(lacking(self.PAGE, self.DUMP), [])

    def test_a_missing_key_is_noticed(self):
        self.assertEqual(lacking(self.PAGE.replace("`name`", "`title`"), self.DUMP),
                         [("site", "name", "string", "load")])

    def test_another_kind_is_noticed(self):
        self.assertEqual(lacking(self.PAGE.replace("| int |", "| bool |"), self.DUMP),
                         [("site", "more.seats", "int", "save")])

    def test_a_writer_that_is_not_named_is_noticed(self):
        self.assertEqual(lacking(self.PAGE.replace("– | site", "site | –"), self.DUMP),
                         [("site", "more.seats", "int", "save")])

    def test_a_row_that_cannot_be_read_is_noticed(self):
        with self.assertRaises(AssertionError):
            list(page_keys("## `a`\n| `name` | string | Name |\n"))


if __name__ == "__main__":
    unittest.main()
