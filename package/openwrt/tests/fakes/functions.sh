# shellcheck shell=sh disable=SC2034,SC2154,SC3043
# What OpenWrt's /lib/functions.sh and UCI make of a file in /etc/config: such a file is also a
# script that calls these functions. As there, an empty option is as good as none, a section without
# a name gets one, and a list is also one text with blanks.

config_load() {
    all_sections='' section_count=0
    # shellcheck source=/dev/null
    . "/etc/config/$1"
}

config() {
    section_count=$((section_count + 1))
    this_section=${2:-$(printf 'cfg%02x4a5b' $section_count)}
    all_sections="$all_sections $this_section"
    option TYPE "$1"
}

option() {
    [ -z "$2" ] || eval "CONFIG_${this_section}_$1=\$2"
}

list() {
    config_get list_length "$this_section" "$1_LENGTH" 0
    config_get list_text "$this_section" "$1"
    list_length=$((list_length + 1))
    option "$1_ITEM$list_length" "$2"
    option "$1_LENGTH" $list_length
    option "$1" "${list_text:+$list_text }$2"
}

# config_get VARIABLE SECTION OPTION [DEFAULT]
config_get() {
    case $2$3 in
    *[!A-Za-z0-9_]*) ;; # as there: the variable stays as it is
    *) eval "$1=\${CONFIG_$2_$3:-\$4}" ;;
    esac
}

config_get_bool() {
    config_get switch_text "$2" "$3" "$4"
    case $switch_text in
    1 | on | true | yes | enabled) eval "$1=1" ;;
    0 | off | false | no | disabled) eval "$1=0" ;;
    *) eval "$1=\$4" ;;
    esac
}

# config_foreach FUNCTION TYPE ARGUMENT...
config_foreach() {
    local each_function="$1" each_type="$2" section type
    shift 2
    for section in $all_sections; do
        config_get type "$section" TYPE
        [ "$type" != "$each_type" ] || "$each_function" "$section" "$@"
    done
}

# config_list_foreach SECTION OPTION FUNCTION
config_list_foreach() {
    local item=1 value length
    config_get length "$1" "$2_LENGTH" 0
    while [ $item -le "$length" ]; do
        config_get value "$1" "$2_ITEM$item"
        "$3" "$value"
        item=$((item + 1))
    done
}
