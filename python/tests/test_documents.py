"""The programs of docs/python.md print what is shown below them."""

import re
from pathlib import Path

DOCUMENT = Path(__file__).parents[2] / "docs" / "python.md"


def test_programs_print_what_is_shown(tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    found = re.findall(
        r"^```python\n(.*?)^```\n```text\n(.*?)^```", DOCUMENT.read_text(), re.M | re.S
    )
    assert len(found) == DOCUMENT.read_text().count("```python") > 3
    names = {}
    for program, shown in found:
        exec(program, names)
        assert capsys.readouterr().out == shown
