pytest_plugins = ["device_mgmt.testing", "pytester"]
