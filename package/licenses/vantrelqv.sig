Vantrel QV
licence-use signature
product=QVSERIES
version=6.0
