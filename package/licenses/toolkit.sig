Vantrel QV toolkit
licence-use signature
product=QVTOOLKIT
version=6.0
