_volux() {
    local word=${COMP_WORDS[COMP_CWORD]} words=
    case "${COMP_WORDS[1]} ${COMP_WORDS[COMP_CWORD - 1]}" in
        *" volux") words="info digest convert resize resample crop reslice sample view compare completion plan run status verify pyramid --help --version" ;;
        "convert --overflow") words="saturate wrap" ;;
        "convert --progress") words="auto plain none" ;;
        "resize --align") words="edges centres" ;;
        "resize --interp") words="nearest linear cubic label" ;;
        "resize --border") words="edge constant" ;;
        "resize --overflow") words="saturate wrap" ;;
        "resize --outside") words="fill extend" ;;
        "resize --antialias") words="none mean auto" ;;
        "resize --progress") words="auto plain none" ;;
        "resample --interp") words="nearest linear cubic label" ;;
        "resample --border") words="edge constant" ;;
        "resample --overflow") words="saturate wrap" ;;
        "resample --outside") words="fill extend" ;;
        "resample --antialias") words="none mean auto" ;;
        "resample --progress") words="auto plain none" ;;
        "crop --overflow") words="saturate wrap" ;;
        "crop --progress") words="auto plain none" ;;
        "reslice --projection") words="mean maximum minimum" ;;
        "reslice --interp") words="nearest linear cubic label" ;;
        "reslice --border") words="edge constant" ;;
        "reslice --overflow") words="saturate wrap" ;;
        "reslice --outside") words="fill extend" ;;
        "reslice --antialias") words="none mean auto" ;;
        "reslice --progress") words="auto plain none" ;;
        "sample --interp") words="nearest linear cubic label" ;;
        "sample --border") words="edge constant" ;;
        "view --interp") words="nearest linear cubic label" ;;
        "view --projection") words="mean maximum minimum" ;;
        "plan --align") words="edges centres" ;;
        "plan --codec") words="zstd blosc none" ;;
        "plan --interp") words="nearest linear cubic label" ;;
        "plan --border") words="edge constant" ;;
        "plan --overflow") words="saturate wrap" ;;
        "plan --outside") words="fill extend" ;;
        "plan --antialias") words="none mean auto" ;;
        "run --progress") words="auto plain none" ;;
        "verify --check") words="stored decoded" ;;
        *) [[ $word != -* ]] || case "${COMP_WORDS[1]}" in
            info) words="--help --json --quiet -q" ;;
            digest) words="--help --json --quiet -q" ;;
            convert) words="--help --dtype --overflow --output -o --force -f --dry-run -n --json --threads --memory --quiet -q --progress --sidecar --no-sidecar" ;;
            resize) words="--help --spacing --shape --scale --align --interp --border --fill --dtype --overflow --outside --antialias --output -o --force -f --dry-run -n --json --threads --memory --quiet -q --progress --sidecar --no-sidecar" ;;
            resample) words="--help --like --transform -t --interp --border --fill --dtype --overflow --outside --antialias --output -o --force -f --dry-run -n --json --threads --memory --quiet -q --progress --sidecar --no-sidecar" ;;
            crop) words="--help --box --dtype --overflow --output -o --force -f --dry-run -n --json --threads --memory --quiet -q --progress --sidecar --no-sidecar" ;;
            reslice) words="--help --centre --normal --up --through --shape --spacing --slab --projection --thickness --count --interp --border --fill --dtype --overflow --outside --antialias --output -o --force -f --dry-run -n --json --threads --memory --quiet -q --progress --sidecar --no-sidecar" ;;
            sample) words="--help --output -o --force -f --threads --quiet -q --interp --border --fill" ;;
            view) words="--help --output -o --force -f --quiet -q --window --interp --labels --volume --montage --centre --normal --up --slab --projection --size" ;;
            compare) words="--help --tolerance --tolerance-mm --json --quiet -q" ;;
            completion) words="--help" ;;
            plan) words="--help --memory --force -f --json --quiet -q --spacing --shape --scale --align --like --transform -t --output -o --plan --chunk --unit --codec --raw --voxel --interp --border --fill --dtype --overflow --outside --antialias" ;;
            run) words="--help --processes --shard --task --threads --memory --json --quiet -q --progress" ;;
            status) words="--help --json" ;;
            verify) words="--help --check --store --json --quiet -q" ;;
            pyramid) words="--help --levels --labels --no-labels --processes --threads --memory --json --quiet -q" ;;
        esac ;;
    esac
    COMPREPLY=($(compgen -W "$words" -- "$word"))
}
complete -o bashdefault -o default -F _volux volux
