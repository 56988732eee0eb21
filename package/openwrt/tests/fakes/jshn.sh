# shellcheck shell=sh disable=SC2034
# What libubox's jshn.sh does for who writes a document: members in their order, texts escaped.

json_init() {
    json_text='{' json_comma='' json_ends='}'
}

# json_key NAME: what comes before a value; members of an array have no name
json_key() {
    json_text="$json_text$json_comma "
    json_comma=,
    case $json_ends in
    ']'*) ;;
    *) json_text="$json_text\"$1\": " ;;
    esac
}

json_add_string() {
    json_key "$1"
    json_text="$json_text\"$(printf %s "$2" | sed 's/[\\"]/\\&/g; s/	/\\t/g')\""
}

# What is no number is 0, as there.
json_add_int() {
    json_key "$1"
    case $2 in
    *[!0-9-]*) json_text="${json_text}0" ;;
    *) json_text="$json_text$2" ;;
    esac
}

json_add_boolean() {
    json_key "$1"
    [ "$2" = 0 ] && json_text="${json_text}false" || json_text="${json_text}true"
}

json_open() { # BRACE END NAME
    json_key "$3"
    json_text="$json_text$1"
    json_ends=$2$json_ends
    json_comma=
}

json_add_object() { json_open '{' '}' "$1"; }
json_add_array() { json_open '[' ']' "$1"; }

json_close() {
    json_text="$json_text ${json_ends%"${json_ends#?}"}"
    json_ends=${json_ends#?}
    json_comma=,
}

json_close_object() { json_close; }
json_close_array() { json_close; }

json_dump() {
    echo "$json_text }"
}
