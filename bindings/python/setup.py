from setuptools import setup

setup(cffi_modules=["build_native.py:ffi"])
