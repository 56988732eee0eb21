# What the SDK's file of this name makes of a package's definitions, as targets for a test:
#
#   make show     every field of every package
#   make unpack   every package's files, into $(ROOT), by way of a folder for each in $(PACKAGES)
#
# As in the SDK a package without one of four fields is an error, and so is a program that needs a
# library which neither its package nor one that this depends on has: $(PKG_INFO_DIR) has a list of
# libraries for each package, and for each name that one provides, from the moment it is packed.

SHOWN:=PKG_NAME PKG_VERSION PKG_LICENSE PKG_SOURCE PKG_SOURCE_URL PKG_HASH PKG_CONFIG_DEPENDS \
	PKG_BUILD_DEPENDS CMAKE_OPTIONS

all: show

show: package-fields
package-fields:
	@:$(foreach v,$(SHOWN),$(info $(v)=$(strip $($(v)))))

unpack:
.NOTPARALLEL:

define Package/Default
SECTION:=opt
CATEGORY:=Extra packages
DEPENDS:=
CONFLICTS:=
PROVIDES:=
MAINTAINER:=$(PKG_MAINTAINER)
VERSION:=$(PKG_VERSION)-r$(PKG_RELEASE)
TITLE:=
URL:=
endef

# $(1): a package, whose fields are set
define CheckDependencies
	@cd $(PACKAGES)/$(1) && { find . -name 'lib*.so*' | sed 's,.*/,,'; \
		for package in libc $(subst +,,$(DEPENDS)); do \
			[ ! -e $(PKG_INFO_DIR)/$$$$package.provides ] || cat $(PKG_INFO_DIR)/$$$$package.provides; \
		done; } | sort -u >$(PKG_INFO_DIR)/$(1).provides
	@cd $(PKG_INFO_DIR) && for name in $(PROVIDES); do cp $(1).provides $$$$name.provides; done
	@find $(PACKAGES)/$(1) -type f -exec readelf -d {} + 2>/dev/null | \
		sed -n 's/.*(NEEDED).*\[\(lib.*\.so.*\)\]/\1/p' | sort -u | \
		grep -vxFf $(PKG_INFO_DIR)/$(1).provides >$(PKG_INFO_DIR)/$(1).missing; \
	[ ! -s $(PKG_INFO_DIR)/$(1).missing ] || { \
		echo "Package $(1) is missing dependencies for the following libraries:"; \
		cat $(PKG_INFO_DIR)/$(1).missing; \
		false; \
	} >&2
endef

define BuildPackage
$(eval $(Package/Default))
$(eval $(Package/$(1)))
$(foreach field,TITLE CATEGORY SECTION VERSION,
$(if $($(field)),,$(error Package/$(1) is missing the $(field) field)))
show: show-$(1)
show-$(1):
	@:$$(info $(1) $(VERSION): $(TITLE))
	@:$$(info $(1) needs $(strip $(DEPENDS)), provides $(PROVIDES), conflicts $(CONFLICTS))
	@:$$(info $(1) is in $(CATEGORY)/$(SECTION), of $(MAINTAINER), at $(URL))
unpack: unpack-$(1)
unpack-$(1):
	rm -rf $(PACKAGES)/$(1)
	mkdir -p $(PACKAGES)/$(1) $(ROOT)
	$(call Package/$(1)/install,$(PACKAGES)/$(1))
	$(CheckDependencies)
	$$(file >$(PKG_INFO_DIR)/$(1).postinst,$$(Package/$(1)/postinst))
	cd $(PACKAGES)/$(1) && find . ! -type d | while read -r file; do \
		[ ! -e "$(ROOT)/$$$$file" ] || { echo "two packages have $$$$file" >&2; exit 1; }; done
	cp -a $(PACKAGES)/$(1)/. $(ROOT)/
endef
