@rem Runs every test program of this folder and writes report.txt. Arguments go to the two unit test programs.
@"%~dp0bin\vorlund_test_report.exe" %*
