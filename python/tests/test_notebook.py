"""The notebook in examples/ runs from its first to its last cell and shows what it promises."""

import nbformat
from conftest import ROOT
from nbclient import NotebookClient


def test_example_notebook(tmp_path, monkeypatch):
    monkeypatch.setenv("IPYTHONDIR", str(tmp_path))
    notebook = nbformat.read(ROOT / "examples" / "ubiquitin.ipynb", as_version=4)
    NotebookClient(notebook, timeout=240, resources={"metadata": {"path": str(ROOT / "examples")}}).execute()
    outputs = [output for cell in notebook.cells if cell.cell_type == "code" for output in cell.outputs]
    assert not [output for output in outputs if output.output_type == "error"]
    pictures = [output for output in outputs if "image/png" in output.get("data", {})]
    shown = [output["data"].get("text/html", "") for output in outputs if "data" in output]
    printed = "".join(output.get("text", "") for output in outputs)
    assert len(pictures) == 2 and any("70 Strong" in text for text in shown)
    assert (
        "PHI" in printed
        and "ConversionError - ubiquitin/README.md:1: " in printed
        and "accepted; median change" in printed
    )
