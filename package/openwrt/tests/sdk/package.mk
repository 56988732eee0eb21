# What the SDK's file of this name makes of a package's definitions, as targets for a test:
#
#   make show         every field of every package
#   make unpack       every package's files, into $(ROOT)

SHOWN:=PKG_NAME PKG_VERSION PKG_LICENSE PKG_SOURCE PKG_CONFIG_DEPENDS PKG_BUILD_DEPENDS CMAKE_OPTIONS

all: show

show: package-fields
package-fields:
	@:$(foreach v,$(SHOWN),$(info $(v)=$(strip $($(v)))))

unpack:

define BuildPackage
TITLE:=
DEPENDS:=
$(Package/$(1))
show: show-$(1)
show-$(1):
	@:$$(info $(1): $$(TITLE_$(1)) ($$(strip $$(DEPENDS_$(1)))))
TITLE_$(1):=$$(TITLE)
DEPENDS_$(1):=$$(DEPENDS)
unpack: unpack-$(1)
unpack-$(1):
$(call Package/$(1)/install,$(ROOT))
endef
