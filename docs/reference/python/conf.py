# SPDX-License-Identifier: MIT
"""Pages of the Python package out of its docstrings. The target reference-python calls Sphinx with the version and with the
build tree's package in the path; a warning is an error there."""
import importlib.util
import inspect
import pathlib

import datainterface

project = "datainterface"
author = "The DataInterface developers"
extensions = ["sphinx.ext.autodoc", "sphinx.ext.napoleon"]
napoleon_google_docstring = False
autodoc_member_order = "bysource"
autodoc_class_signature = "separated"  # Most classes are not made by their users.
html_theme = "alabaster"
html_theme_options = {"description": datainterface.__doc__.splitlines()[0], "fixed_sidebar": True}
html_sidebars = {"**": ["about.html", "navigation.html", "searchbox.html"]}
html_static_path = ["static"]
html_copy_source = False
html_show_sourcelink = False
# Dask need not be there to describe what works with it.
autodoc_mock_imports = [name for name in ("dask", "distributed") if importlib.util.find_spec(name) is None]

CLASS = """
.. autoclass:: {name}
   :members:
   :exclude-members: __init__
   :inherited-members: Mapping, RuntimeError, KeyError, UserWarning, tuple
"""

MODULE = """
.. automodule:: datainterface.{name}
   :members:
"""


def page(title, names, directive):
    return "\n".join([title, "=" * len(title), "", ".. currentmodule:: datainterface", ""]
                     + [directive.format(name=name) for name in names])


def write_pages(app):
    """One page for the functions, one for the failures, one for each class and module, so that no public name is left out."""
    things = {name: getattr(datainterface, name) for name in datainterface.__all__}
    modules = [name for name, thing in things.items() if inspect.ismodule(thing)]
    if (pathlib.Path(datainterface.__file__).parent / "dask.py").exists():
        modules.append("dask")
    classes = [name for name, thing in things.items() if inspect.isclass(thing)]
    failures = [name for name in classes if issubclass(things[name], Exception)]
    functions = [name for name in things if name not in classes + modules]
    pages = {"functions": page("Functions", functions, ".. autofunction:: {name}\n"),
             "failures": page("Failures and warnings", failures, ".. autoexception:: {name}\n")}
    pages.update({name: page(name, [name], CLASS) for name in classes if name not in failures})
    pages.update({name: page(f"datainterface.{name}", [name], MODULE) for name in modules})
    for name, text in pages.items():
        path = pathlib.Path(app.srcdir) / f"{name}.rst"
        if not path.exists() or path.read_text(encoding="utf-8") != text:
            path.write_text(text, encoding="utf-8")


def setup(app):
    app.connect("builder-inited", write_pages)
