"""The programs of the pages do what the pages show."""

import re
import subprocess
import sys

import pytest
from conftest import EXAMPLES

TOP = EXAMPLES.parent


@pytest.mark.parametrize("page, programs", [("README.md", 1), ("docs/python.md", 5)])
def test_programs(tmp_path, page, programs):
    (tmp_path / "examples").symlink_to(EXAMPLES)
    text = (TOP / page).read_text()
    found = re.findall(r"```python\n(.*?)```\n+```text\n(.*?)```", text, re.DOTALL)
    assert len(found) == text.count("```python\n") == programs
    earlier = ""
    for program, shown in found:
        code = earlier + "print('--')\n" + program
        done = subprocess.run([sys.executable, "-c", code], cwd=tmp_path, capture_output=True, text=True)
        assert done.stdout.rpartition("--\n")[2] == shown, done.stderr
        earlier += program
