"""What README.md shows is what happens."""
from __future__ import annotations

import doctest
import pathlib
import re

import pytest

from device_mgmt.testing import Vorsim

README = pathlib.Path(__file__).parents[1] / "README.md"


def test_examples(vorsim: Vorsim, monkeypatch: pytest.MonkeyPatch, tmp_path: pathlib.Path) -> None:
    monkeypatch.chdir(tmp_path)
    text = README.read_text(encoding="utf-8").replace("```", "")
    test = doctest.DocTestParser().get_doctest(text, {}, README.name, str(README), 0)
    assert test.examples
    assert doctest.DocTestRunner(verbose=False).run(test).failed == 0


def test_test(pytester: pytest.Pytester) -> None:
    found = re.search("```python\n(.*?)```", README.read_text(encoding="utf-8"), re.DOTALL)
    assert found
    pytester.makepyfile("import pytest\n\nimport device_mgmt\n" + found[1])
    result = pytester.runpytest_inprocess("-p", "no:cacheprovider", "-p", "device_mgmt.testing", "-p", "no:pytester")
    result.assert_outcomes(passed=1)
