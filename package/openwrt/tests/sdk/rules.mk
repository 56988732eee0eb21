# What the SDK's file of this name gives a package, as far as this package uses it.
INCLUDE_DIR:=$(TOPDIR)
DL_DIR:=/dl
STAGING_DIR:=/staging
INSTALL_DIR:=install -d -m0755
INSTALL_BIN:=install -m0755
INSTALL_CONF:=install -m0600
INSTALL_DATA:=install -m0644
