complete -c volux -n __fish_use_subcommand -a info -d 'Print what a file holds: extents, spacing, place, type and range.'
complete -c volux -n '__fish_seen_subcommand_from info' -l help
complete -c volux -n '__fish_seen_subcommand_from info' -l json
complete -c volux -n '__fish_seen_subcommand_from info' -l quiet
complete -c volux -n '__fish_seen_subcommand_from info' -s q
complete -c volux -n __fish_use_subcommand -a digest -d 'Print the SHA-256 of the decoded voxels and their place.'
complete -c volux -n '__fish_seen_subcommand_from digest' -l help
complete -c volux -n '__fish_seen_subcommand_from digest' -l json
complete -c volux -n '__fish_seen_subcommand_from digest' -l quiet
complete -c volux -n '__fish_seen_subcommand_from digest' -s q
complete -c volux -n __fish_use_subcommand -a convert -d 'Write a volume in another format, or with another type.'
complete -c volux -n '__fish_seen_subcommand_from convert' -l help
complete -c volux -n '__fish_seen_subcommand_from convert' -l dtype
complete -c volux -n '__fish_seen_subcommand_from convert' -l overflow -x -a 'saturate wrap'
complete -c volux -n '__fish_seen_subcommand_from convert' -l output
complete -c volux -n '__fish_seen_subcommand_from convert' -s o
complete -c volux -n '__fish_seen_subcommand_from convert' -l force
complete -c volux -n '__fish_seen_subcommand_from convert' -s f
complete -c volux -n '__fish_seen_subcommand_from convert' -l dry-run
complete -c volux -n '__fish_seen_subcommand_from convert' -s n
complete -c volux -n '__fish_seen_subcommand_from convert' -l json
complete -c volux -n '__fish_seen_subcommand_from convert' -l threads
complete -c volux -n '__fish_seen_subcommand_from convert' -l memory
complete -c volux -n '__fish_seen_subcommand_from convert' -l quiet
complete -c volux -n '__fish_seen_subcommand_from convert' -s q
complete -c volux -n '__fish_seen_subcommand_from convert' -l progress -x -a 'auto plain none'
complete -c volux -n '__fish_seen_subcommand_from convert' -l sidecar
complete -c volux -n '__fish_seen_subcommand_from convert' -l no-sidecar
complete -c volux -n __fish_use_subcommand -a resize -d 'Bring a volume to another number of voxels, in the same place.'
complete -c volux -n '__fish_seen_subcommand_from resize' -l help
complete -c volux -n '__fish_seen_subcommand_from resize' -l spacing
complete -c volux -n '__fish_seen_subcommand_from resize' -l shape
complete -c volux -n '__fish_seen_subcommand_from resize' -l scale
complete -c volux -n '__fish_seen_subcommand_from resize' -l align -x -a 'edges centres'
complete -c volux -n '__fish_seen_subcommand_from resize' -l interp -x -a 'nearest linear cubic label'
complete -c volux -n '__fish_seen_subcommand_from resize' -l border -x -a 'edge constant'
complete -c volux -n '__fish_seen_subcommand_from resize' -l fill
complete -c volux -n '__fish_seen_subcommand_from resize' -l dtype
complete -c volux -n '__fish_seen_subcommand_from resize' -l overflow -x -a 'saturate wrap'
complete -c volux -n '__fish_seen_subcommand_from resize' -l outside -x -a 'fill extend'
complete -c volux -n '__fish_seen_subcommand_from resize' -l antialias -x -a 'none mean auto'
complete -c volux -n '__fish_seen_subcommand_from resize' -l output
complete -c volux -n '__fish_seen_subcommand_from resize' -s o
complete -c volux -n '__fish_seen_subcommand_from resize' -l force
complete -c volux -n '__fish_seen_subcommand_from resize' -s f
complete -c volux -n '__fish_seen_subcommand_from resize' -l dry-run
complete -c volux -n '__fish_seen_subcommand_from resize' -s n
complete -c volux -n '__fish_seen_subcommand_from resize' -l json
complete -c volux -n '__fish_seen_subcommand_from resize' -l threads
complete -c volux -n '__fish_seen_subcommand_from resize' -l memory
complete -c volux -n '__fish_seen_subcommand_from resize' -l quiet
complete -c volux -n '__fish_seen_subcommand_from resize' -s q
complete -c volux -n '__fish_seen_subcommand_from resize' -l progress -x -a 'auto plain none'
complete -c volux -n '__fish_seen_subcommand_from resize' -l sidecar
complete -c volux -n '__fish_seen_subcommand_from resize' -l no-sidecar
complete -c volux -n __fish_use_subcommand -a resample -d 'Bring a volume onto the grid of another one, through transforms.'
complete -c volux -n '__fish_seen_subcommand_from resample' -l help
complete -c volux -n '__fish_seen_subcommand_from resample' -l like
complete -c volux -n '__fish_seen_subcommand_from resample' -l transform
complete -c volux -n '__fish_seen_subcommand_from resample' -s t
complete -c volux -n '__fish_seen_subcommand_from resample' -l interp -x -a 'nearest linear cubic label'
complete -c volux -n '__fish_seen_subcommand_from resample' -l border -x -a 'edge constant'
complete -c volux -n '__fish_seen_subcommand_from resample' -l fill
complete -c volux -n '__fish_seen_subcommand_from resample' -l dtype
complete -c volux -n '__fish_seen_subcommand_from resample' -l overflow -x -a 'saturate wrap'
complete -c volux -n '__fish_seen_subcommand_from resample' -l outside -x -a 'fill extend'
complete -c volux -n '__fish_seen_subcommand_from resample' -l antialias -x -a 'none mean auto'
complete -c volux -n '__fish_seen_subcommand_from resample' -l output
complete -c volux -n '__fish_seen_subcommand_from resample' -s o
complete -c volux -n '__fish_seen_subcommand_from resample' -l force
complete -c volux -n '__fish_seen_subcommand_from resample' -s f
complete -c volux -n '__fish_seen_subcommand_from resample' -l dry-run
complete -c volux -n '__fish_seen_subcommand_from resample' -s n
complete -c volux -n '__fish_seen_subcommand_from resample' -l json
complete -c volux -n '__fish_seen_subcommand_from resample' -l threads
complete -c volux -n '__fish_seen_subcommand_from resample' -l memory
complete -c volux -n '__fish_seen_subcommand_from resample' -l quiet
complete -c volux -n '__fish_seen_subcommand_from resample' -s q
complete -c volux -n '__fish_seen_subcommand_from resample' -l progress -x -a 'auto plain none'
complete -c volux -n '__fish_seen_subcommand_from resample' -l sidecar
complete -c volux -n '__fish_seen_subcommand_from resample' -l no-sidecar
complete -c volux -n __fish_use_subcommand -a crop -d 'Cut a box of voxels out of a volume; what is left keeps its place.'
complete -c volux -n '__fish_seen_subcommand_from crop' -l help
complete -c volux -n '__fish_seen_subcommand_from crop' -l box
complete -c volux -n '__fish_seen_subcommand_from crop' -l dtype
complete -c volux -n '__fish_seen_subcommand_from crop' -l overflow -x -a 'saturate wrap'
complete -c volux -n '__fish_seen_subcommand_from crop' -l output
complete -c volux -n '__fish_seen_subcommand_from crop' -s o
complete -c volux -n '__fish_seen_subcommand_from crop' -l force
complete -c volux -n '__fish_seen_subcommand_from crop' -s f
complete -c volux -n '__fish_seen_subcommand_from crop' -l dry-run
complete -c volux -n '__fish_seen_subcommand_from crop' -s n
complete -c volux -n '__fish_seen_subcommand_from crop' -l json
complete -c volux -n '__fish_seen_subcommand_from crop' -l threads
complete -c volux -n '__fish_seen_subcommand_from crop' -l memory
complete -c volux -n '__fish_seen_subcommand_from crop' -l quiet
complete -c volux -n '__fish_seen_subcommand_from crop' -s q
complete -c volux -n '__fish_seen_subcommand_from crop' -l progress -x -a 'auto plain none'
complete -c volux -n '__fish_seen_subcommand_from crop' -l sidecar
complete -c volux -n '__fish_seen_subcommand_from crop' -l no-sidecar
complete -c volux -n __fish_use_subcommand -a reslice -d 'Cut a plane, a slab or a stack of planes out of a volume.'
complete -c volux -n '__fish_seen_subcommand_from reslice' -l help
complete -c volux -n '__fish_seen_subcommand_from reslice' -l centre
complete -c volux -n '__fish_seen_subcommand_from reslice' -l normal
complete -c volux -n '__fish_seen_subcommand_from reslice' -l up
complete -c volux -n '__fish_seen_subcommand_from reslice' -l through
complete -c volux -n '__fish_seen_subcommand_from reslice' -l shape
complete -c volux -n '__fish_seen_subcommand_from reslice' -l spacing
complete -c volux -n '__fish_seen_subcommand_from reslice' -l slab
complete -c volux -n '__fish_seen_subcommand_from reslice' -l projection -x -a 'mean maximum minimum'
complete -c volux -n '__fish_seen_subcommand_from reslice' -l thickness
complete -c volux -n '__fish_seen_subcommand_from reslice' -l count
complete -c volux -n '__fish_seen_subcommand_from reslice' -l interp -x -a 'nearest linear cubic label'
complete -c volux -n '__fish_seen_subcommand_from reslice' -l border -x -a 'edge constant'
complete -c volux -n '__fish_seen_subcommand_from reslice' -l fill
complete -c volux -n '__fish_seen_subcommand_from reslice' -l dtype
complete -c volux -n '__fish_seen_subcommand_from reslice' -l overflow -x -a 'saturate wrap'
complete -c volux -n '__fish_seen_subcommand_from reslice' -l outside -x -a 'fill extend'
complete -c volux -n '__fish_seen_subcommand_from reslice' -l antialias -x -a 'none mean auto'
complete -c volux -n '__fish_seen_subcommand_from reslice' -l output
complete -c volux -n '__fish_seen_subcommand_from reslice' -s o
complete -c volux -n '__fish_seen_subcommand_from reslice' -l force
complete -c volux -n '__fish_seen_subcommand_from reslice' -s f
complete -c volux -n '__fish_seen_subcommand_from reslice' -l dry-run
complete -c volux -n '__fish_seen_subcommand_from reslice' -s n
complete -c volux -n '__fish_seen_subcommand_from reslice' -l json
complete -c volux -n '__fish_seen_subcommand_from reslice' -l threads
complete -c volux -n '__fish_seen_subcommand_from reslice' -l memory
complete -c volux -n '__fish_seen_subcommand_from reslice' -l quiet
complete -c volux -n '__fish_seen_subcommand_from reslice' -s q
complete -c volux -n '__fish_seen_subcommand_from reslice' -l progress -x -a 'auto plain none'
complete -c volux -n '__fish_seen_subcommand_from reslice' -l sidecar
complete -c volux -n '__fish_seen_subcommand_from reslice' -l no-sidecar
complete -c volux -n __fish_use_subcommand -a sample -d 'Read a volume at the points of a CSV file.'
complete -c volux -n '__fish_seen_subcommand_from sample' -l help
complete -c volux -n '__fish_seen_subcommand_from sample' -l output
complete -c volux -n '__fish_seen_subcommand_from sample' -s o
complete -c volux -n '__fish_seen_subcommand_from sample' -l force
complete -c volux -n '__fish_seen_subcommand_from sample' -s f
complete -c volux -n '__fish_seen_subcommand_from sample' -l threads
complete -c volux -n '__fish_seen_subcommand_from sample' -l quiet
complete -c volux -n '__fish_seen_subcommand_from sample' -s q
complete -c volux -n '__fish_seen_subcommand_from sample' -l interp -x -a 'nearest linear cubic label'
complete -c volux -n '__fish_seen_subcommand_from sample' -l border -x -a 'edge constant'
complete -c volux -n '__fish_seen_subcommand_from sample' -l fill
complete -c volux -n __fish_use_subcommand -a view -d 'Draw an axial, a coronal and a sagittal plane of a volume; or others.'
complete -c volux -n '__fish_seen_subcommand_from view' -l help
complete -c volux -n '__fish_seen_subcommand_from view' -l output
complete -c volux -n '__fish_seen_subcommand_from view' -s o
complete -c volux -n '__fish_seen_subcommand_from view' -l force
complete -c volux -n '__fish_seen_subcommand_from view' -s f
complete -c volux -n '__fish_seen_subcommand_from view' -l quiet
complete -c volux -n '__fish_seen_subcommand_from view' -s q
complete -c volux -n '__fish_seen_subcommand_from view' -l window
complete -c volux -n '__fish_seen_subcommand_from view' -l interp -x -a 'nearest linear cubic label'
complete -c volux -n '__fish_seen_subcommand_from view' -l labels
complete -c volux -n '__fish_seen_subcommand_from view' -l volume
complete -c volux -n '__fish_seen_subcommand_from view' -l montage
complete -c volux -n '__fish_seen_subcommand_from view' -l centre
complete -c volux -n '__fish_seen_subcommand_from view' -l normal
complete -c volux -n '__fish_seen_subcommand_from view' -l up
complete -c volux -n '__fish_seen_subcommand_from view' -l slab
complete -c volux -n '__fish_seen_subcommand_from view' -l projection -x -a 'mean maximum minimum'
complete -c volux -n '__fish_seen_subcommand_from view' -l size
complete -c volux -n __fish_use_subcommand -a compare -d 'Print how two volumes differ, and exit 1 if they do.'
complete -c volux -n '__fish_seen_subcommand_from compare' -l help
complete -c volux -n '__fish_seen_subcommand_from compare' -l tolerance
complete -c volux -n '__fish_seen_subcommand_from compare' -l tolerance-mm
complete -c volux -n '__fish_seen_subcommand_from compare' -l json
complete -c volux -n '__fish_seen_subcommand_from compare' -l quiet
complete -c volux -n '__fish_seen_subcommand_from compare' -s q
complete -c volux -n __fish_use_subcommand -a completion -d 'Print the script that completes commands in a shell.'
complete -c volux -n '__fish_seen_subcommand_from completion' -l help
complete -c volux -n __fish_use_subcommand -a plan -d 'Plan a result that is made unit by unit, by volux run, in OME-Zarr 0.5.'
complete -c volux -n '__fish_seen_subcommand_from plan' -l help
complete -c volux -n '__fish_seen_subcommand_from plan' -l memory
complete -c volux -n '__fish_seen_subcommand_from plan' -l force
complete -c volux -n '__fish_seen_subcommand_from plan' -s f
complete -c volux -n '__fish_seen_subcommand_from plan' -l json
complete -c volux -n '__fish_seen_subcommand_from plan' -l quiet
complete -c volux -n '__fish_seen_subcommand_from plan' -s q
complete -c volux -n '__fish_seen_subcommand_from plan' -l spacing
complete -c volux -n '__fish_seen_subcommand_from plan' -l shape
complete -c volux -n '__fish_seen_subcommand_from plan' -l scale
complete -c volux -n '__fish_seen_subcommand_from plan' -l align -x -a 'edges centres'
complete -c volux -n '__fish_seen_subcommand_from plan' -l like
complete -c volux -n '__fish_seen_subcommand_from plan' -l transform
complete -c volux -n '__fish_seen_subcommand_from plan' -s t
complete -c volux -n '__fish_seen_subcommand_from plan' -l output
complete -c volux -n '__fish_seen_subcommand_from plan' -s o
complete -c volux -n '__fish_seen_subcommand_from plan' -l plan
complete -c volux -n '__fish_seen_subcommand_from plan' -l chunk
complete -c volux -n '__fish_seen_subcommand_from plan' -l unit
complete -c volux -n '__fish_seen_subcommand_from plan' -l codec -x -a 'zstd blosc none'
complete -c volux -n '__fish_seen_subcommand_from plan' -l raw
complete -c volux -n '__fish_seen_subcommand_from plan' -l voxel
complete -c volux -n '__fish_seen_subcommand_from plan' -l interp -x -a 'nearest linear cubic label'
complete -c volux -n '__fish_seen_subcommand_from plan' -l border -x -a 'edge constant'
complete -c volux -n '__fish_seen_subcommand_from plan' -l fill
complete -c volux -n '__fish_seen_subcommand_from plan' -l dtype
complete -c volux -n '__fish_seen_subcommand_from plan' -l overflow -x -a 'saturate wrap'
complete -c volux -n '__fish_seen_subcommand_from plan' -l outside -x -a 'fill extend'
complete -c volux -n '__fish_seen_subcommand_from plan' -l antialias -x -a 'none mean auto'
complete -c volux -n __fish_use_subcommand -a run -d 'Make the units of a plan that are not there yet.'
complete -c volux -n '__fish_seen_subcommand_from run' -l help
complete -c volux -n '__fish_seen_subcommand_from run' -l processes
complete -c volux -n '__fish_seen_subcommand_from run' -l shard
complete -c volux -n '__fish_seen_subcommand_from run' -l task
complete -c volux -n '__fish_seen_subcommand_from run' -l threads
complete -c volux -n '__fish_seen_subcommand_from run' -l memory
complete -c volux -n '__fish_seen_subcommand_from run' -l json
complete -c volux -n '__fish_seen_subcommand_from run' -l quiet
complete -c volux -n '__fish_seen_subcommand_from run' -s q
complete -c volux -n '__fish_seen_subcommand_from run' -l progress -x -a 'auto plain none'
complete -c volux -n __fish_use_subcommand -a status -d 'Print how many units of a plan there are, and whether the result is verified.'
complete -c volux -n '__fish_seen_subcommand_from status' -l help
complete -c volux -n '__fish_seen_subcommand_from status' -l json
complete -c volux -n __fish_use_subcommand -a verify -d 'Print the units that are wrong, and exit 1; or mark the result complete.'
complete -c volux -n '__fish_seen_subcommand_from verify' -l help
complete -c volux -n '__fish_seen_subcommand_from verify' -l check -x -a 'stored decoded'
complete -c volux -n '__fish_seen_subcommand_from verify' -l store
complete -c volux -n '__fish_seen_subcommand_from verify' -l json
complete -c volux -n '__fish_seen_subcommand_from verify' -l quiet
complete -c volux -n '__fish_seen_subcommand_from verify' -s q
complete -c volux -n __fish_use_subcommand -a pyramid -d 'Add levels to a store: each voxel the mean of 2 x 2 x 2 of the level before.'
complete -c volux -n '__fish_seen_subcommand_from pyramid' -l help
complete -c volux -n '__fish_seen_subcommand_from pyramid' -l levels
complete -c volux -n '__fish_seen_subcommand_from pyramid' -l labels
complete -c volux -n '__fish_seen_subcommand_from pyramid' -l no-labels
complete -c volux -n '__fish_seen_subcommand_from pyramid' -l processes
complete -c volux -n '__fish_seen_subcommand_from pyramid' -l threads
complete -c volux -n '__fish_seen_subcommand_from pyramid' -l memory
complete -c volux -n '__fish_seen_subcommand_from pyramid' -l json
complete -c volux -n '__fish_seen_subcommand_from pyramid' -l quiet
complete -c volux -n '__fish_seen_subcommand_from pyramid' -s q
