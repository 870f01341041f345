"""Sphinx's configuration; scripts/docs runs it on docs/ and what is generated beside it."""

import os

project = "SeluUtils"
copyright = "2026, the SeluUtils developers"
release = version = os.environ["SELU_VERSION"]
extensions = ["myst_parser", "sphinx.ext.mathjax"] + os.environ.get("SELU_EXTENSIONS", "").split()
myst_enable_extensions = ["deflist", "dollarmath"]
myst_heading_anchors = 3
myst_update_mathjax = False
exclude_patterns = ["_build"]
highlight_language = "cpp"
html_theme = "furo"
html_title = f"SeluUtils {release}"
html_static_path = ["_static"]
html_css_files = ["seluutils.css"]
html_show_sourcelink = False
html_copy_source = False
html_use_index = True
numpydoc_show_class_members = False
autodoc_typehints = "none"
